#include "Platform/Dispatch/ClockDriver.h"

#include "Platform/Dispatch/Linux/DeadlineScheduler.h"
#include "Platform/Dispatch/Linux/MainQueue.h"
#include "Platform/Dispatch/Linux/WorkerPool.h"

namespace zqcore::platform {

void ClockDriver::install(Clock& clock) { Clock::installForTesting(&clock); }

void ClockDriver::uninstall() {
    DeadlineScheduler::shared().dropAll();
    Clock::installForTesting(nullptr);
    DeadlineScheduler::shared().clockChanged();
}

std::optional<Clock::Duration> ClockDriver::timeToNext() { return DeadlineScheduler::shared().timeToNext(); }

bool ClockDriver::submitNextDue() { return DeadlineScheduler::shared().submitNextDue(); }

void ClockDriver::waitUntilQuiet() {
    const bool onMain = isMainThread();
    // A stepping block is under way itself and can't wait for its own end.
    const DispatchBlockingScope scope;
    const auto mainHasWork = [onMain] { return onMain && MainQueue::shared().hasWork(); };
    do {
        while (mainHasWork()) MainQueue::shared().drain();
        WorkerPool::shared().waitUntilQuiet(mainHasWork);
    } while (mainHasWork());
}

}  // namespace zqcore::platform
