#pragma once

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// A set of Unicode scalars, kept as sorted ranges. Threads: a value, immutable once made. Failure: none;
/// bytes that are no UTF-8 count as U+FFFD.
class ZQ_EXPORT NSCharacterSet final {
  public:
    /// First and last scalar of a range, both of them in it.
    using Range = std::pair<char32_t, char32_t>;

    /// The empty set.
    NSCharacterSet() = default;

    /// The scalars that occur in `text`.
    [[nodiscard]] static NSCharacterSet characterSetWithCharactersInString(std::string_view text);
    /// The scalars of all `ranges`, which may come in any order and overlap. A range whose last comes before
    /// its first is empty.
    [[nodiscard]] static NSCharacterSet characterSetWithRanges(std::vector<Range> ranges);
    /// General category Nd.
    [[nodiscard]] static const NSCharacterSet& decimalDigitCharacterSet();

    /// All other scalars.
    [[nodiscard]] NSCharacterSet invertedSet() const;

    [[nodiscard]] bool characterIsMember(char32_t scalar) const noexcept {
        if (scalar < 0x80) return (ascii_[scalar / 64] >> scalar % 64 & 1U) != 0;
        return isMemberBeyondASCII(scalar);
    }
    /// The ranges in ascending order; none touches the next.
    [[nodiscard]] const std::vector<Range>& ranges() const noexcept { return ranges_; }

    friend bool operator==(const NSCharacterSet&, const NSCharacterSet&) = default;

  private:
    [[nodiscard]] bool isMemberBeyondASCII(char32_t scalar) const noexcept;

    std::vector<Range> ranges_;
    std::uint64_t ascii_[2] = {0, 0};
};

}  // namespace zqcore::platform
