#include "Platform/Foundation/Text/Linux/CharacterBreaks.h"

#include <unicode/ubrk.h>
#include <unicode/utext.h>

#include <algorithm>
#include <memory>

#include "Platform/Base/Linux/ReleasedBy.h"
#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore::platform {
namespace {

using BreakIterator = std::unique_ptr<UBreakIterator, ReleasedBy<ubrk_close>>;

/// A break iterator of this thread's own. Cloning one is far cheaper than making one. Null without ICU data.
UBreakIterator* threadIterator() {
    // Never destroyed: a thread that ends late may still clone it.
    static UBreakIterator* const original = [] {
        UErrorCode status = U_ZERO_ERROR;
        auto* made = ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &status);
        return U_SUCCESS(status) ? made : nullptr;
    }();
    thread_local const BreakIterator own([] {
        UErrorCode status = U_ZERO_ERROR;
        return original ? ubrk_clone(original, &status) : nullptr;
    }());
    return own.get();
}

}  // namespace

std::size_t findCharacterBreaks(std::string_view text, std::span<std::size_t> breaks) {
    if (text.empty() || breaks.empty()) return 0;
    UErrorCode status = U_ZERO_ERROR;
    UText input = UTEXT_INITIALIZER;
    // Positions come back as 32-bit numbers; a batch never needs more than this much of the text.
    const auto length = std::min<std::size_t>(text.size(), std::size_t{1} << 30U);
    auto* iterator = threadIterator();
    utext_openUTF8(&input, text.data(), static_cast<std::int64_t>(length), &status);
    if (iterator) ubrk_setUText(iterator, &input, &status);
    std::size_t count = 0;
    if (iterator && U_SUCCESS(status)) {
        ubrk_first(iterator);
        while (count < breaks.size()) {
            const std::int32_t end = ubrk_next(iterator);
            if (end == UBRK_DONE) break;
            breaks[count++] = static_cast<std::size_t>(end);
        }
    }
    utext_close(&input);
    // Without the rules every scalar is a character.
    if (count == 0) breaks[count++] = firstScalar(text).length;
    return count;
}

}  // namespace zqcore::platform
