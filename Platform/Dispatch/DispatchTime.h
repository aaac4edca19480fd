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
        return {Base::monotonic, Clock::current().now().sinceStart + delay};
    }
    [[nodiscard]] static DispatchTime wallNow(Clock::Duration delay = {}) noexcept {
        return {Base::wall, Clock::current().wallNow().time_since_epoch() + delay};
    }
};

}  // namespace zqcore::platform
