// The emoji filter against the rule as it reads: cut the whole text into characters and judge each.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "Classes/Core/Category/NSStringRemoveEmoji.h"
#include "Platform/Foundation/Text/Character.h"
#include "Platform/Foundation/Text/Utf8.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zqcore;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto removed = zq_removingEmoji(text);
    if (removed.size() + zq_allEmojiString(text).size() != size) std::abort();
    if (zq_allEmojiRanges(text).size() != zq_allEmoji(text).size()) std::abort();
    // Where a stray byte stands, what extends it is a matter of taste.
    if (!isValidUTF8(text)) return 0;
    std::string kept;
    for (CharacterCursor cursor(text); auto character = cursor.next();) {
        if (!zq_containsEmoji(*character)) kept += *character;
    }
    if (kept != removed) std::abort();
    return 0;
}
