#include "Platform/Dispatch/Linux/SerialQueue.h"

#include <utility>

#include "Platform/Dispatch/Linux/CurrentQueue.h"
#include "Platform/Dispatch/Linux/Shortage.h"

namespace zqcore::platform {

namespace {

// How often a queue that ran empty looks again before its worker goes (some 40 ns each), how many vain tries
// end the habit, and after how many rests it is tried anew.
constexpr int kLooks = 50;
constexpr int kPatience = 4;
constexpr unsigned kRestsUntilRetry = 16;

// A caller of `sync` may have handlers of its own on the stack; a block's exception must not reach them.
void runToTheEnd(const std::function<void()>& block) noexcept { block(); }

}  // namespace

void SerialQueue::async(DispatchBlock block) {
    bool isOwned = false;
    {
        const BriefLock lock(mutex_);
        incoming_.add(std::move(block));
        hasIncoming_.store(true, std::memory_order_relaxed);
        foreignProducer_.store(!WorkerPool::isWorker(), std::memory_order_relaxed);
        isOwned = std::exchange(owned_, true);
    }
    if (!isOwned) {
        submitSelf();
    } else if (Shortage::isFelt()) [[unlikely]] {
        // It may lie in wait for a thread that was not to be had.
        Shortage::tryAgain();
    }
}

void SerialQueue::submitSelf() {
    WorkerPool::shared().submit(std::static_pointer_cast<SerialQueue>(shared_from_this()), qos_);
}

void SerialQueue::drain(const std::shared_ptr<Drainable>& self) {
    const CurrentQueueScope scope(this);
    for (;;) {
        if (!runBatch()) return;
        lingerForMore();
        if (!takeBatchOrGo()) return;
        WorkerPool& pool = WorkerPool::shared();
        if (pool.contended()) {
            pool.submit(self, qos_);
            return;
        }
    }
}

// Gives false if the queue went to a thread in `sync`; nothing of it may be touched then.
bool SerialQueue::runBatch() {
    unsigned count = 0;
    while (!batch_.empty()) {
        batch_.runFirst();
        ++count;
        if (successor_) [[unlikely]] {
            // Counted before the worker rests, so that no observer sees a quiet moment between the two.
            WorkerPool::shared().beginForeignRun();
            std::exchange(successor_, nullptr)->signal();
            return false;
        }
    }
    streams_ = count > 1;
    return true;
}

// A stream from an application's thread brings its next block within some tens of nanoseconds. Looking again
// for a moment costs less than going to sleep and being woken for each block. It is tried only while it pays,
// and never against work that waits elsewhere. Workers that feed a queue are soon free to run it themselves,
// so for them it would only cost. Yielding instead of looking is worse: on a busy machine the worker, which
// owns the queue, comes back milliseconds later, while one that sleeps is woken at once.
void SerialQueue::lingerForMore() noexcept {
    if (!foreignProducer_.load(std::memory_order_relaxed)) return;
    if (patience_ == 0 && ++restsSinceTried_ % kRestsUntilRetry != 0) return;
    const WorkerPool& pool = WorkerPool::shared();
    for (int i = 0; i < kLooks && !pool.contended(); ++i) {
        if (hasIncoming_.load(std::memory_order_relaxed)) {
            patience_ = kPatience;
            if (streams_) gather();
            return;
        }
        pauseProcessor();
    }
    if (patience_ > 0) --patience_;
}

// Each taking costs the producers the line that they add to, so a queue that is fed in a stream takes a good
// many blocks at a time: it waits about two microseconds more, as long as it would have looked.
void SerialQueue::gather() const noexcept {
    const WorkerPool& pool = WorkerPool::shared();
    for (int i = 0; i < kLooks && !pool.contended(); ++i) pauseProcessor();
}

// Takes what came meanwhile, or gives the queue up.
bool SerialQueue::takeBatchOrGo() {
    const BriefLock lock(mutex_);
    if (!incoming_.empty()) {
        batch_.swap(incoming_);
        hasIncoming_.store(false, std::memory_order_relaxed);
        return true;
    }
    // A queue at rest gives the memory of a long list back; one at work needs it again at once.
    batch_.shrink();
    incoming_.shrink();
    owned_ = false;
    return false;
}

// Makes the calling thread the owner, counted as a foreign run.
void SerialQueue::ownNowOrWait() {
    WorkerPool& pool = WorkerPool::shared();
    // Before it owns: what others add from then on is counted nowhere else.
    pool.beginForeignRun();
    OneShotSignal turn;
    {
        const BriefLock lock(mutex_);
        if (!std::exchange(owned_, true)) return;
        incoming_.add([this, &turn] { successor_ = &turn; });
        hasIncoming_.store(true, std::memory_order_relaxed);
    }
    pool.endForeignRun();
    const DispatchBlockingScope scope;
    turn.wait();
}

void SerialQueue::passOn() {
    if (batch_.empty() && !takeBatchOrGo()) return;
    submitSelf();
}

void SerialQueue::sync(const std::function<void()>& block) {
    // The block may drop the last reference from outside.
    const auto self = shared_from_this();
    ownNowOrWait();
    WorkerPool::holdForeignRun(1);
    {
        const CurrentQueueScope scope(this);
        runToTheEnd(block);
    }
    WorkerPool::holdForeignRun(-1);
    passOn();
    WorkerPool::shared().endForeignRun();
}

}  // namespace zqcore::platform
