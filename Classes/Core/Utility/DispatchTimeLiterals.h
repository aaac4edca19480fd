#pragma once

#include <cmath>

#include "Platform/Dispatch/DispatchTime.h"

namespace zqcore {

/// A count of nanoseconds as the clock holds it: cut to whole ones, held at the ends of the range; a NaN is
/// 0.
[[nodiscard]] inline Clock::Duration durationFromNanoseconds(double nanoseconds) noexcept {
    if (std::isnan(nanoseconds)) return {};
    // 2^63 is the first double beyond the range.
    if (nanoseconds >= 0x1p63) return Clock::Duration::max();
    if (nanoseconds < -0x1p63) return Clock::Duration::min();
    return Clock::Duration(static_cast<Clock::Duration::rep>(nanoseconds));
}

/// The same for seconds.
[[nodiscard]] inline Clock::Duration durationFromSeconds(double seconds) noexcept {
    return durationFromNanoseconds(seconds * 1e9);
}

/// Moments of the monotonic time, as the platform's literals give them. Write `2_fromNow` after
/// `using namespace zqcore::literals`, or call the functions. Threads: any. Failure: none; a moment beyond
/// the range is never reached.
class DispatchTimeLiteral final {
  public:
    DispatchTimeLiteral() = delete;

    /// Now plus so many seconds.
    [[nodiscard]] static DispatchTime integer(long long seconds) noexcept {
        return DispatchTime::now(durationFromSeconds(static_cast<double>(seconds)));
    }
    /// Now plus so many seconds, cut to whole milliseconds.
    [[nodiscard]] static DispatchTime floating(double seconds) noexcept {
        // Not by way of seconds again: 1.025 s is no double, and would lose a nanosecond.
        return DispatchTime::now(durationFromNanoseconds(std::trunc(seconds * 1000.0) * 1e6));
    }
};

namespace literals {

[[nodiscard]] inline DispatchTime operator""_fromNow(unsigned long long seconds) noexcept {
    return DispatchTimeLiteral::integer(static_cast<long long>(seconds));
}
[[nodiscard]] inline DispatchTime operator""_fromNow(long double seconds) noexcept {
    return DispatchTimeLiteral::floating(static_cast<double>(seconds));
}

}  // namespace literals

}  // namespace zqcore
