#pragma once

#include <optional>

#include "Platform/Base/Clock.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// What a test kit steps the queues with; production code has no use for it.
/// Threads: one at a time. Lifetime: an installed clock must outlive its use.
class ZQ_EXPORT ClockDriver final {
  public:
    ClockDriver() = delete;

    /// Puts `clock` in force. From now on deadlines come due only by `submitNextDue`.
    static void install(Clock& clock);
    /// Puts the system's clock back in force and drops all delayed work and waiting timers.
    static void uninstall();
    /// Time from now until the earliest deadline, negative if it is over; absent without one.
    [[nodiscard]] static std::optional<Clock::Duration> timeToNext();
    /// Submits the earliest deadline to its queue if it is due. Gives whether there was one.
    static bool submitNextDue();
    /// Returns when no block is ready or runs on any queue; the caller's own and threads in a
    /// `DispatchBlockingScope` count as quiet, and so does what waits for a thread behind them. On the main
    /// thread it runs the main queue's blocks; elsewhere that queue is left out. Under any clock.
    static void waitUntilQuiet();
};

}  // namespace zqcore::platform
