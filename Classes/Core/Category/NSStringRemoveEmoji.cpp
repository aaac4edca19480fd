#include "Classes/Core/Category/NSStringRemoveEmoji.h"

#include "Classes/Core/Category/EmojiScanner.h"
#include "Classes/Core/Category/SystemEmojiText.h"
#include "Platform/Foundation/Text/Utf16.h"
#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore {
namespace {

/// Calls `use` with the range and text of each emoji sequence, in order.
template <class Use>
void enumerateEmoji(std::string_view text, Use use) {
    EmojiScanner scanner(text);
    while (const auto found = scanner.next()) {
        use(*found, text.substr(found->begin, found->end - found->begin));
    }
}

}  // namespace

bool isFuckEmoji(std::string_view text) noexcept {
    if (text.empty()) return false;
    return isListedKeycap(text) || isListedEmoji(firstScalar(text).value);
}

bool zq_containsEmoji(std::string_view text) noexcept {
    if (text.empty()) return false;
    return isListedKeycap(text) || countsAsEmoji(firstScalar(text).value);
}

std::string zq_removingEmoji(std::string_view text) { return zq_stringByReplaceingEmojiWithString(text, {}); }

std::string zq_stringByReplaceingEmojiWithString(std::string_view text, std::string_view replacement) {
    std::string result;
    result.reserve(text.size());
    std::size_t copied = 0;
    enumerateEmoji(text, [&](EmojiScanner::Found found, std::string_view) {
        result.append(text, copied, found.begin - copied);
        if (!replacement.empty()) result.append(replacement);
        copied = found.end;
    });
    result.append(text, copied);
    return result;
}

std::string zq_allEmojiString(std::string_view text) {
    std::string result;
    enumerateEmoji(text, [&](EmojiScanner::Found, std::string_view emoji) { result.append(emoji); });
    return result;
}

std::vector<std::string> zq_allEmoji(std::string_view text) {
    std::vector<std::string> result;
    enumerateEmoji(text, [&](EmojiScanner::Found, std::string_view emoji) { result.emplace_back(emoji); });
    return result;
}

std::vector<std::string> zq_allEmojiRanges(std::string_view text) {
    std::vector<std::string> result;
    std::size_t counted = 0;
    std::size_t location = 0;
    enumerateEmoji(text, [&](EmojiScanner::Found found, std::string_view emoji) {
        location += utf16Length(text.substr(counted, found.begin - counted));
        const std::size_t length = utf16Length(emoji);
        auto& range = result.emplace_back("{");
        range += std::to_string(location);
        range += ", ";
        range += std::to_string(length);
        range += '}';
        location += length;
        counted = found.end;
    });
    return result;
}

std::string zq_allSystemEmoji() { return std::string(kSystemEmojiText); }

}  // namespace zqcore
