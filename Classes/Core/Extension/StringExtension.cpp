#include "Classes/Core/Extension/StringExtension.h"

#include <algorithm>
#include <iterator>

#include "Classes/Core/Utility/ZQConvert.h"
#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Foundation/Text/Character.h"
#include "Platform/Foundation/Text/CharacterSet.h"
#include "Platform/Foundation/Text/NSRegularExpression.h"
#include "Platform/Foundation/Text/Utf16.h"
#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore {
namespace {

constexpr char32_t kZeroWidthSpace = 0x200B;
constexpr char32_t kLineSeparator = 0x2028;

/// \s of the patterns: the platform's blanks, but for U+200B, which Unicode doesn't count among them.
bool isPatternSpace(char32_t scalar) {
    return scalar != kZeroWidthSpace && CharacterSet::isWhitespaceOrNewline(scalar);
}

bool isNewLine(char32_t scalar) { return scalar == '\n' || scalar == '\r' || scalar == kLineSeparator; }

template <class Test>
std::string collapsed(std::string_view text, Test test, char single) {
    std::string result;
    result.reserve(text.size());
    bool inRun = false;
    while (!text.empty()) {
        const auto scalar = firstScalar(text);
        const bool matches = test(scalar.value);
        if (!matches) {
            result.append(text, 0, scalar.length);
        } else if (!inRun) {
            result += single;
        }
        inRun = matches;
        text.remove_prefix(scalar.length);
    }
    return result;
}

/// Where the last scalar of `text` begins.
std::size_t lastScalarBegin(std::string_view text) noexcept {
    std::size_t begin = text.size() - 1;
    while (begin > 0 && text.size() - begin < 4 &&
           (static_cast<unsigned char>(text[begin]) & 0xC0U) == 0x80U) {
        --begin;
    }
    return begin + firstScalar(text.substr(begin)).length == text.size() ? begin : text.size() - 1;
}

struct Entity {
    std::string_view name;  ///< what follows the ampersand
    char character;
};
constexpr Entity kEntities[] = {{"quot;", '"'}, {"#x27;", '\''}, {"#39;", '\''}, {"#x92;", '\''},
                                {"#x96;", '-'}, {"gt;", '>'},    {"lt;", '<'}};
constexpr std::string_view kAmpersand = "&amp;";

}  // namespace

bool zq_matchRegex(std::string_view text, std::string_view regex, const std::source_location& where) {
    if (text.empty() || regex.empty()) return false;
    const auto expression = NSRegularExpression::make(regex);
    if (!expression) {
        ZQLogError([&] { return "Invalid pattern: " + std::string(regex); }, nullptr, where);
        return false;
    }
    return expression->matchesWhole(text);
}

std::vector<std::string> zq_componentsFilterEmpty(std::string_view text, std::string_view separatedBy) {
    std::vector<std::string> components;
    std::size_t begin = 0;
    const auto add = [&](std::size_t end) {
        if (end > begin) components.emplace_back(text.substr(begin, end - begin));
    };
    const NSStringSearch search(text, separatedBy, 0);
    while (const auto separator = search.find(begin)) {
        add(separator->begin);
        begin = separator->end;
    }
    add(text.size());
    return components;
}

std::string_view trimmedView(std::string_view text) noexcept {
    while (!text.empty()) {
        const auto scalar = firstScalar(text);
        if (!CharacterSet::isWhitespaceOrNewline(scalar.value)) break;
        text.remove_prefix(scalar.length);
    }
    while (!text.empty()) {
        const std::size_t begin = lastScalarBegin(text);
        if (!CharacterSet::isWhitespaceOrNewline(firstScalar(text.substr(begin)).value)) break;
        text = text.substr(0, begin);
    }
    return text;
}

std::string zq_trimmingWhitespaceAndNewline(std::string_view text) { return std::string(trimmedView(text)); }

std::string zq_replacingMultipleWhitespaceToSingle(std::string_view text) {
    return collapsed(text, isPatternSpace, ' ');
}

std::string zq_replacingMultipleNewLineToSingle(std::string_view text) {
    return collapsed(text, isNewLine, '\n');
}

std::string zq_removingCharacters(std::string_view text, const NSCharacterSet& exceptIn) {
    std::string result;
    while (!text.empty()) {
        const auto scalar = firstScalar(text);
        if (exceptIn.characterIsMember(scalar.value)) result.append(text, 0, scalar.length);
        text.remove_prefix(scalar.length);
    }
    return result;
}

std::string zq_escapingXML(std::string_view text) {
    std::string result;
    result.reserve(text.size() + text.size() / 8);
    for (const char c : text) {
        switch (c) {
            case '&':
                result += kAmpersand;
                break;
            case '"':
                result += "&quot;";
                break;
            case '\'':
                result += "&#x27;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '<':
                result += "&lt;";
                break;
            default:
                result += c;
                break;
        }
    }
    return result;
}

std::string zq_unescapingXML(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (;;) {
        const std::size_t ampersand = text.find('&');
        result.append(text.substr(0, ampersand));
        if (ampersand == std::string_view::npos) return result;
        // "&amp;" is replaced in the whole text first. What it becomes can begin an entity, but never be
        // within one, so that one look ahead serves.
        text.remove_prefix(ampersand +
                           (text.substr(ampersand).starts_with(kAmpersand) ? kAmpersand.size() : 1));
        const auto entity = std::ranges::find_if(
            kEntities, [&](const Entity& candidate) { return text.starts_with(candidate.name); });
        if (entity == std::end(kEntities)) {
            result += '&';
        } else {
            result += entity->character;
            text.remove_prefix(entity->name.size());
        }
    }
}

std::vector<TextRange> zq_ranges(std::string_view text, std::string_view of, unsigned options) {
    std::vector<TextRange> ranges;
    const NSStringSearch search(text, of, options);
    std::size_t start = 0;
    while (start < text.size()) {
        const auto found = search.find(start);
        if (!found) break;
        ranges.push_back(*found);
        start = found->end;
        if (found->size() == 0 && start < text.size()) {
            start += CharacterCursor(text.substr(start)).next()->size();
        }
    }
    return ranges;
}

std::size_t zq_NSStringLength(std::string_view text) { return utf16Length(text); }

std::optional<std::string> asNotEmpty(std::string text) {
    if (text.empty()) return std::nullopt;
    return text;
}

std::u16string toNSString(std::string_view text) { return toUTF16(text); }

std::optional<Data> toUTF8Data(std::string text) { return ZQConvert::dataFromUTF8String(std::move(text)); }

}  // namespace zqcore
