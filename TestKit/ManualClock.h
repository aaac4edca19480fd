#pragma once

#include <atomic>
#include <mutex>

#include "Platform/Base/Clock.h"

namespace zqcore::testkit {

/// A clock that stands still until it is stepped. It puts itself in force and, at its end, the system's
/// again; delayed work that is still waiting then is dropped. Both times move together; the wall can also be
/// set. Threads: reading from any; stepping from one at a time, from the main thread or any other. Main-queue
/// blocks run while the main thread steps or waits. Lifetime: outlives the timers of its test, one at a time.
/// Failure: none; a block that waits for something outside a `DispatchBlockingScope` is waited for.
class ManualClock final : public platform::Clock {
  public:
    /// 2024-01-02 03:04:05 UTC, a day without summer time in the northern half.
    static constexpr platform::Date kStart{std::chrono::seconds(1'704'164'645)};

    explicit ManualClock(platform::Date wall = kStart);
    ~ManualClock() override;
    ManualClock(const ManualClock&) = delete;
    ManualClock& operator=(const ManualClock&) = delete;

    [[nodiscard]] Instant now() const noexcept override;
    [[nodiscard]] platform::Date wallNow() const noexcept override;

    /// Lets `step` pass. All that comes due on the way is submitted to its queue in the order of the
    /// deadlines, each at its own time; before the next one the queues get quiet. A period below 100
    /// microseconds counts as so long.
    void advance(Duration step);
    /// Sets the wall, as its owner does: deadlines on the wall move with it, and those that it passes are
    /// run.
    void setWall(platform::Date wall);
    /// Returns when no block is ready or runs, threads in a `DispatchBlockingScope` left out.
    void waitUntilQuiet();

  private:
    void runWhatIsDue();

    std::atomic<Duration::rep> now_;
    std::atomic<Duration::rep> wallOffset_;
};

}  // namespace zqcore::testkit
