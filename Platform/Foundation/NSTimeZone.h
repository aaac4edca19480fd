#pragma once

#include <cstdint>
#include <ctime>
#include <optional>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// A time zone: a fixed distance from UTC, or that of the process (TZ, else the machine's setting).
/// Threads: a value; the process's zone is asked anew each time, so TZ mustn't be changed meanwhile.
class ZQ_EXPORT NSTimeZone final {
  public:
    /// East of UTC is positive.
    [[nodiscard]] static NSTimeZone timeZoneForSecondsFromGMT(std::int32_t seconds) noexcept {
        return NSTimeZone(seconds);
    }
    [[nodiscard]] static NSTimeZone defaultTimeZone() noexcept { return NSTimeZone(std::nullopt); }

    /// The distance from UTC in seconds; absent for the process's own zone, where it changes with the date.
    [[nodiscard]] std::optional<std::int32_t> fixedSeconds() const noexcept { return seconds_; }

    /// The calendar time of a moment, given in seconds since 1970, and its distance from UTC in `tm_gmtoff`.
    [[nodiscard]] std::tm calendarTime(std::int64_t secondsSince1970) const noexcept;
    /// The moment of a calendar time. Where the clock is set back the first of the two; where it is set
    /// forward and skips the time, the moment that lies as far behind the gap as the time lies in it.
    [[nodiscard]] std::int64_t moment(const std::tm& calendarTime) const noexcept;

  private:
    explicit NSTimeZone(std::optional<std::int32_t> seconds) noexcept : seconds_(seconds) {}
    std::optional<std::int32_t> seconds_;
};

}  // namespace zqcore::platform
