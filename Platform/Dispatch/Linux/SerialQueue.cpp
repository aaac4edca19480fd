#include "Platform/Dispatch/Linux/SerialQueue.h"

#include <utility>

#include "Platform/Dispatch/Linux/CurrentQueue.h"
#include "Platform/Dispatch/Linux/Futex.h"

namespace zqcore::platform {

namespace {

// A list that once was long gives its memory back.
constexpr std::size_t kKeptCapacity = 1024;

// A caller of `sync` may have handlers of its own on the stack; a block's exception must not reach them.
void runToTheEnd(const std::function<void()>& block) noexcept { block(); }

}  // namespace

void SerialQueue::async(DispatchBlock block) {
    {
        const std::lock_guard lock(mutex_);
        incoming_.push_back(std::move(block));
        if (std::exchange(owned_, true)) return;
    }
    submitSelf();
}

void SerialQueue::submitSelf() {
    WorkerPool::shared().submit(std::static_pointer_cast<SerialQueue>(shared_from_this()), qos_);
}

void SerialQueue::drain(const std::shared_ptr<Drainable>& self) {
    const CurrentQueueScope scope(this);
    for (;;) {
        if (!runBatch()) return;
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
    while (next_ < batch_.size()) {
        DispatchBlock& block = batch_[next_++];
        block();
        block.reset();
        if (successor_) [[unlikely]] {
            // Counted before the worker rests, so that no observer sees a quiet moment between the two.
            WorkerPool::shared().addForeignRun(1);
            std::exchange(successor_, nullptr)->signal();
            return false;
        }
    }
    return true;
}

// Takes what came meanwhile, or gives the queue up.
bool SerialQueue::takeBatchOrGo() {
    batch_.clear();
    next_ = 0;
    if (batch_.capacity() > kKeptCapacity) std::vector<DispatchBlock>().swap(batch_);
    const std::lock_guard lock(mutex_);
    if (incoming_.empty()) {
        owned_ = false;
        return false;
    }
    batch_.swap(incoming_);
    return true;
}

// Makes the calling thread the owner. Gives whether it was counted as a foreign run.
bool SerialQueue::ownNowOrWait() {
    WorkerPool& pool = WorkerPool::shared();
    std::unique_lock lock(mutex_);
    if (!owned_) {
        owned_ = true;
        lock.unlock();
        if (!pool.observed()) return false;
        pool.addForeignRun(1);
        return true;
    }
    OneShotSignal turn;
    incoming_.emplace_back([this, &turn] { successor_ = &turn; });
    lock.unlock();
    const DispatchBlockingScope scope;
    turn.wait();
    return true;
}

void SerialQueue::passOn() {
    if (next_ == batch_.size() && !takeBatchOrGo()) return;
    submitSelf();
}

void SerialQueue::sync(const std::function<void()>& block) {
    const bool counted = ownNowOrWait();
    {
        const CurrentQueueScope scope(this);
        runToTheEnd(block);
    }
    passOn();
    if (counted) WorkerPool::shared().addForeignRun(-1);
}

}  // namespace zqcore::platform
