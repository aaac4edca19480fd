#include "Platform/Base/Clock.h"

#include <atomic>

namespace zqcore::platform {

namespace {

class SystemClock final : public Clock {
  public:
    Instant now() const noexcept override {
        return {std::chrono::duration_cast<Duration>(std::chrono::steady_clock::now().time_since_epoch())};
    }
    Date wallNow() const noexcept override { return std::chrono::system_clock::now(); }
};

std::atomic<Clock*> installed{nullptr};

}  // namespace

Clock& Clock::system() noexcept {
    // Never ended: threads may still ask for the time while the process goes.
    static SystemClock& clock = *new SystemClock;
    return clock;
}

Clock& Clock::current() noexcept {
    Clock* clock = installed.load(std::memory_order_acquire);
    return clock ? *clock : system();
}

void Clock::installForTesting(Clock* clock) noexcept { installed.store(clock, std::memory_order_release); }

}  // namespace zqcore::platform
