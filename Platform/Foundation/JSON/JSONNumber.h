#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// A number as it stands in a JSON text, already checked against the grammar of RFC 8259. Threads: a value.
struct JSONNumber {
    std::string_view token;
    bool negative = false;
    /// Neither fraction nor exponent.
    bool integral = true;
    /// The digits of an integral token; only when `fits`.
    std::uint64_t magnitude = 0;
    bool fits = false;

    // Each gives absent for a value that the type can't hold exactly (the integers) or at all (the double:
    // overflow, and a number other than 0 that would become 0). 1.0 and 1e2 are integers.
    [[nodiscard]] ZQ_EXPORT std::optional<std::int64_t> asInt64() const noexcept;
    [[nodiscard]] ZQ_EXPORT std::optional<std::uint64_t> asUInt64() const noexcept;
    [[nodiscard]] ZQ_EXPORT std::optional<double> asDouble() const noexcept;
};

/// Room for any double that `writeDouble` lays out.
inline constexpr std::size_t kDoubleRoom = 40;

/// Writes the shortest digits that read back as `value`: decimal for 1e-4 <= |value| <= 2^53 and for 0, with
/// exponent elsewhere; whole numbers without fraction. `value` is finite, `out` has `kDoubleRoom` bytes.
/// Gives the end.
[[nodiscard]] ZQ_EXPORT char* writeDouble(double value, char* out) noexcept;

/// The same for people: a whole number keeps ".0", infinities and NaN have their words.
[[nodiscard]] ZQ_EXPORT std::string describeDouble(double value);

}  // namespace zqcore::platform
