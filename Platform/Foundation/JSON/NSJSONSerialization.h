#pragma once

#include <expected>
#include <string_view>

#include "Platform/Base/Data.h"
#include "Platform/Base/Export.h"
#include "Platform/Base/NSError.h"
#include "Platform/Base/Value.h"

namespace zqcore::platform {

/// Bits that say how generic reading goes. Values are mutable here anyway, so the first two change nothing.
using NSJSONReadingOptions = unsigned;
inline constexpr NSJSONReadingOptions NSJSONReadingMutableContainers = 1;
inline constexpr NSJSONReadingOptions NSJSONReadingMutableLeaves = 2;
/// Without this bit a top-level value that is neither array nor object is refused.
inline constexpr NSJSONReadingOptions NSJSONReadingFragmentsAllowed = 4;

/// JSON text (RFC 8259, UTF-8) and generic values. Integers are exact within 64 bits and doubles beyond; the
/// first of two equal keys counts; an array or object may lie within 511 others.
/// Threads: any, no state. Failure: an error of the domain NSCocoaErrorDomain with the code 3840.
class ZQ_EXPORT NSJSONSerialization final {
  public:
    NSJSONSerialization() = delete;

    [[nodiscard]] static std::expected<Value, NSError> JSONObject(std::string_view text,
                                                                  NSJSONReadingOptions options);
    /// Compact text of a value that passes `isValidJSONObject`.
    [[nodiscard]] static std::expected<Data, NSError> data(const Value& value);
    /// Whether the top level is an array or a dictionary, all values are texts, finite numbers, booleans,
    /// null, arrays and dictionaries, and the depth, leaves counted, is 512 at most.
    [[nodiscard]] static bool isValidJSONObject(const Value& value);
};

}  // namespace zqcore::platform
