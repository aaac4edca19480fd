#pragma once

#include <chrono>

#include "Platform/Base/Date.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// The one source of time. Queue delays, timer sources, time-outs, run loops and log stamps all read it, so a
/// test that steps a clock of its own steps them all. Threads: all operations from any thread. Lifetime: an
/// installed clock must outlive its use; the system's lives for ever.
class ZQ_EXPORT Clock {
  public:
    using Duration = std::chrono::nanoseconds;
    /// A point of the time that only runs forward, from an arbitrary beginning.
    struct Instant {
        Duration sinceStart{};
        friend auto operator<=>(const Instant&, const Instant&) = default;
        friend Instant operator+(Instant instant, Duration d) { return {instant.sinceStart + d}; }
        friend Duration operator-(Instant a, Instant b) { return a.sinceStart - b.sinceStart; }
    };

    virtual ~Clock() = default;
    [[nodiscard]] virtual Instant now() const noexcept = 0;
    [[nodiscard]] virtual Date wallNow() const noexcept = 0;

    /// The clock in force: the system's, unless a test kit installed another.
    [[nodiscard]] static Clock& current() noexcept;
    /// The system's own clock (CLOCK_MONOTONIC and CLOCK_REALTIME), whatever is installed.
    [[nodiscard]] static Clock& system() noexcept;
    /// Puts `clock` in force, or the system's again for a null pointer. For test kits, before timers run.
    static void installForTesting(Clock* clock) noexcept;
};

}  // namespace zqcore::platform
