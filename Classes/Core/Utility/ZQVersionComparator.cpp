#include "Classes/Core/Utility/ZQVersionComparator.h"

#include <charconv>
#include <cstdint>
#include <optional>

#include "Platform/Foundation/Text/Character.h"
#include "Platform/Foundation/Text/CharacterSet.h"
#include "Platform/Foundation/Text/Compare.h"
#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore {
namespace {

// In the order in which parts of different kinds compare; the end of a version lies behind the string.
enum class CharacterType { string, end, separator, number };

CharacterType typeOfCharacter(std::string_view character) {
    const char32_t scalar = firstScalar(character).value;
    if (CharacterSet::isDecimalDigit(scalar)) return CharacterType::number;
    if (CharacterSet::isWhitespaceOrNewline(scalar)) return CharacterType::separator;
    if (CharacterSet::isPunctuation(scalar)) return CharacterType::separator;
    return CharacterType::string;
}

struct Part {
    CharacterType type = CharacterType::end;
    std::string_view text;
};

/// Splits a version into its parts, one at a time: nothing is gathered, nothing is copied.
class PartReader {
  public:
    explicit PartReader(std::string_view version) : version_(version), cursor_(version) { advance(); }

    /// The next part, of type `end` behind the last.
    Part next() {
        if (!character_) return {};
        const CharacterType type = type_;
        const std::size_t begin = begin_;
        do {
            advance();
        } while (character_ && type_ == type && type != CharacterType::separator);
        return {type, version_.substr(begin, begin_ - begin)};
    }

  private:
    void advance() {
        begin_ = cursor_.position();
        character_ = cursor_.next();
        if (character_) type_ = typeOfCharacter(*character_);
    }

    std::string_view version_;
    CharacterCursor cursor_;
    std::optional<std::string_view> character_;
    CharacterType type_ = CharacterType::end;
    std::size_t begin_ = 0;
};

std::int64_t numberOf(std::string_view digits) {
    std::int64_t number = 0;
    const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return error == std::errc{} && stop == digits.data() + digits.size() ? number : 0;
}

template <class T>
NSComparisonResult ordered(T a, T b) {
    if (a == b) return NSOrderedSame;
    return a < b ? NSOrderedAscending : NSOrderedDescending;
}

}  // namespace

NSComparisonResult ZQVersionComparator::compareVersion(std::string_view versionA, std::string_view versionB) {
    PartReader readerA(versionA);
    PartReader readerB(versionB);
    while (true) {
        const Part a = readerA.next();
        const Part b = readerB.next();
        auto order = ordered(a.type, b.type);
        if (order != NSOrderedSame) return order;
        if (a.type == CharacterType::end) return NSOrderedSame;
        if (a.type == CharacterType::number) order = ordered(numberOf(a.text), numberOf(b.text));
        if (a.type == CharacterType::string) order = compareText(a.text, b.text);
        if (order != NSOrderedSame) return order;
    }
}

}  // namespace zqcore
