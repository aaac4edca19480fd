#pragma once

#include <chrono>

namespace zqcore::platform {

/// A moment of wall time, in UTC. Resolution one nanosecond, range the years 1678 to 2262.
using Date = std::chrono::time_point<std::chrono::system_clock, std::chrono::nanoseconds>;

/// Seconds since 1970-01-01 00:00:00 UTC, with fraction. Any thread.
[[nodiscard]] inline double secondsSince1970(Date date) {
    return std::chrono::duration<double>(date.time_since_epoch()).count();
}

/// The moment that lies `seconds` after 1970; clamped to the range of `Date`. A NaN gives 1970. Any thread.
[[nodiscard]] inline Date dateSince1970(double seconds) {
    constexpr double limit = 9.2e9;
    if (!(seconds > -limit)) seconds = seconds != seconds ? 0.0 : -limit;
    if (seconds > limit) seconds = limit;
    return Date{std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(seconds))};
}

}  // namespace zqcore::platform
