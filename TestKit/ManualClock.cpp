#include "TestKit/ManualClock.h"

#include <algorithm>

#include "Platform/Dispatch/ClockDriver.h"
#include "Platform/Dispatch/DispatchTime.h"

namespace zqcore::testkit {

// It goes on from the system's time, so that deadlines from before keep their meaning.
ManualClock::ManualClock(Date wall) : now_(Clock::system().now().sinceStart.count()) {
    wallOffset_ = wall.time_since_epoch().count() - now_;
    ClockDriver::install(*this);
}

ManualClock::~ManualClock() {
    ClockDriver::waitUntilQuiet();
    ClockDriver::uninstall();
}

Clock::Instant ManualClock::now() const noexcept { return {Duration(now_.load())}; }

Date ManualClock::wallNow() const noexcept { return Date(Duration(now_.load() + wallOffset_.load())); }

void ManualClock::waitUntilQuiet() { ClockDriver::waitUntilQuiet(); }

void ManualClock::runWhatIsDue() {
    do {
        ClockDriver::waitUntilQuiet();
    } while (ClockDriver::submitNextDue());
}

void ManualClock::advance(Duration step) {
    const Duration end = DispatchTime::sum(now().sinceStart, step);
    for (;;) {
        runWhatIsDue();
        const Duration left = end - now().sinceStart;
        if (left <= Duration::zero()) return;
        // Another thread may have added one that is over already; time stands still for it.
        const Duration next = ClockDriver::timeToNext().value_or(left);
        now_ += std::clamp(next, Duration::zero(), left).count();
    }
}

void ManualClock::setWall(Date wall) {
    wallOffset_ = wall.time_since_epoch().count() - now_;
    runWhatIsDue();
}

}  // namespace zqcore::testkit
