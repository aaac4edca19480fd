#include "Classes/Core/Extension/StringSubscript.h"

#include <algorithm>
#include <limits>

#include "Platform/Foundation/Text/Character.h"

namespace zqcore {
namespace {

constexpr std::int64_t kEnd = std::numeric_limits<std::int64_t>::max();

/// Passes over `count` characters, or as many as there are.
void skip(CharacterCursor& cursor, std::int64_t count) {
    while (count > 0 && cursor.next()) --count;
}

}  // namespace

std::string subscript(std::string_view text, HalfOpenRange range) {
    const std::int64_t first = std::max<std::int64_t>(range.first, 0);
    CharacterCursor cursor(text);
    skip(cursor, first);
    const std::size_t begin = cursor.position();
    if (range.end == kEnd) return std::string(text.substr(begin));
    if (range.end > first) skip(cursor, range.end - first);
    return std::string(text.substr(begin, cursor.position() - begin));
}

std::string subscript(std::string_view text, ClosedRange range) {
    return subscript(text, HalfOpenRange{range.first, range.last == kEnd ? kEnd : range.last + 1});
}

std::string subscript(std::string_view text, PartialRangeFrom range) {
    return subscript(text, HalfOpenRange{range.first, kEnd});
}

std::string subscript(std::string_view text, PartialRangeThrough range) {
    return subscript(text, ClosedRange{0, std::max<std::int64_t>(range.last, 0)});
}

}  // namespace zqcore
