#pragma once

#include <cstdint>

#include "Platform/Base/Clock.h"

namespace zqcore::platform {

/// A moment at which delayed work is due: on the time that only runs forward, or on the wall.
/// Threads: a value.
struct DispatchTime {
    /// Monotonic: nanoseconds of `Clock::now()`. Wall: nanoseconds since 1970 of `Clock::wallNow()`.
    enum class Base : std::uint8_t { monotonic, wall };

    Base base = Base::monotonic;
    Clock::Duration at{};

    /// Now plus `delay`; a negative delay is a moment in the past, which is due at once.
    [[nodiscard]] static DispatchTime now(Clock::Duration delay = {}) noexcept {
        return {Base::monotonic, sum(Clock::current().now().sinceStart, delay)};
    }
    [[nodiscard]] static DispatchTime wallNow(Clock::Duration delay = {}) noexcept {
        return {Base::wall, sum(Clock::current().wallNow().time_since_epoch(), delay)};
    }
    /// The moment `delay` after this one.
    [[nodiscard]] DispatchTime operator+(Clock::Duration delay) const noexcept {
        return {base, sum(at, delay)};
    }

    /// `a + b`, held at the ends of the range instead of turning over: the far end is never reached.
    [[nodiscard]] static constexpr Clock::Duration sum(Clock::Duration a, Clock::Duration b) noexcept {
        Clock::Duration::rep result = 0;
        if (!__builtin_add_overflow(a.count(), b.count(), &result)) return Clock::Duration(result);
        return a.count() < 0 ? Clock::Duration::min() : Clock::Duration::max();
    }
};

}  // namespace zqcore::platform
