#include "Platform/Dispatch/Linux/Shortage.h"

#include "Platform/Dispatch/Linux/DeadlineScheduler.h"
#include "Platform/Dispatch/Linux/MainQueue.h"
#include "Platform/Dispatch/Linux/WorkerPool.h"

namespace zqcore::platform {

void Shortage::note() noexcept {
    // The main loop may sleep without a limit. A vain retry leaves it asleep.
    if (notes_.fetch_add(1) == 0) MainQueue::shared().wake();
}

void Shortage::tryAgain() {
    std::uint32_t before = notes_.load();
    WorkerPool::shared().tryAgain();
    DeadlineScheduler::shared().tryAgain();
    // Over only if nobody noted anything meanwhile.
    notes_.compare_exchange_strong(before, 0);
}

}  // namespace zqcore::platform
