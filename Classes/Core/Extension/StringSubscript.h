#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore {

// Ranges of character positions, as in `a...b`, `a..<b`, `a...` and `...b`.

struct ClosedRange {
    std::int64_t first;
    std::int64_t last;  ///< included
};
struct HalfOpenRange {
    std::int64_t first;
    std::int64_t end;  ///< not included
};
struct PartialRangeFrom {
    std::int64_t first;
};
struct PartialRangeThrough {
    std::int64_t last;  ///< included
};

// The stretch of `text` between two positions, as a new text. Positions count user-perceived characters, and
// those out of range are limited to it: of "abc", {1, 99} half open is "bc" and {5, 9} is "". Threads: pure
// functions, any thread. Failure: none.

[[nodiscard]] ZQ_EXPORT std::string subscript(std::string_view text, ClosedRange range);
[[nodiscard]] ZQ_EXPORT std::string subscript(std::string_view text, HalfOpenRange range);
[[nodiscard]] ZQ_EXPORT std::string subscript(std::string_view text, PartialRangeFrom range);
/// A negative `last` still gives the first character; the empty text gives the empty text.
[[nodiscard]] ZQ_EXPORT std::string subscript(std::string_view text, PartialRangeThrough range);

}  // namespace zqcore
