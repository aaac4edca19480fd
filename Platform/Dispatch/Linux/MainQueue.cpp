#include "Platform/Dispatch/Linux/MainQueue.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>
#include <utility>

#include "Platform/Dispatch/Linux/CurrentQueue.h"
#include "Platform/Dispatch/Linux/Futex.h"
#include "Platform/Dispatch/Linux/WorkerPool.h"

namespace zqcore::platform {

namespace {

// Room that the queue keeps for the next burst, in blocks of a cache line.
constexpr std::size_t kKept = 1024;

}  // namespace

MainQueue::MainQueue() = default;

const std::shared_ptr<DispatchQueue>& MainQueue::sharedPointer() {
    // Never ended: threads may still submit while the process goes.
    static const auto& queue = *new std::shared_ptr<DispatchQueue>(std::make_shared<MainQueue>());
    return queue;
}

MainQueue& MainQueue::shared() {
    static MainQueue& queue = static_cast<MainQueue&>(*sharedPointer());
    return queue;
}

template <typename Change>
void MainQueue::change(const Change& change) {
    bool wasSilent = false;
    {
        const std::lock_guard lock(mutex_);
        change();
        wasSilent = !std::exchange(readable_, true);
    }
    // Not under the lock: the main thread wakes on another processor meanwhile, and would only meet it.
    if (!wasSilent) return;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(descriptor_.load(), &one, sizeof one);
}

void MainQueue::async(DispatchBlock block) {
    change([&] { incoming_.push_back(std::move(block)); });
    WorkerPool::shared().pokeObservers();
}

void MainQueue::sync(const std::function<void()>& block) {
    OneShotSignal done;
    WorkerPool& pool = WorkerPool::shared();
    async([&] {
        block();
        // The caller goes on from here, though it may take a while until it runs.
        pool.beginForeignRun();
        done.signal();
    });
    {
        const DispatchBlockingScope scope;
        done.wait();
    }
    pool.endForeignRun();
}

int MainQueue::fileDescriptor() noexcept {
    const std::lock_guard lock(mutex_);
    if (descriptor_ < 0) descriptor_ = eventfd(readable_ ? 1 : 0, EFD_CLOEXEC | EFD_NONBLOCK);
    return descriptor_;
}

void MainQueue::wake() noexcept {
    change([] {});
}

void MainQueue::requestTurn() {
    change([this] { turnRequested_ = true; });
    WorkerPool::shared().pokeObservers();
}

bool MainQueue::hasWork() {
    const std::lock_guard lock(mutex_);
    return batchWaits_ || turnRequested_ || !incoming_.empty();
}

// No exception of a block may reach what the host has on its stack.
bool MainQueue::drain() noexcept {
    bool ran = false;
    {
        const std::lock_guard lock(mutex_);
        ran = std::exchange(turnRequested_, false);
    }
    if (turnHandlers_[0]) turnHandlers_[0]();
    if (next_ == batch_.size()) {
        batch_.clear();
        next_ = 0;
        const std::lock_guard lock(mutex_);
        batch_.swap(incoming_);
        batchWaits_ = !batch_.empty();
    }
    while (next_ < batch_.size()) {
        ran = true;
        // Out of the list: a nested loop may take the next batch into it.
        DispatchBlock block = std::move(batch_[next_++]);
        const CurrentQueueScope scope(this);
        block();
    }
    if (batch_.capacity() > kKept) {
        std::vector<DispatchBlock>().swap(batch_);
        next_ = 0;
    }
    if (turnHandlers_[1]) turnHandlers_[1]();
    const std::lock_guard lock(mutex_);
    batchWaits_ = false;
    // Who made it readable may get to write that only after what it announced has run; the drain that finds
    // nothing takes it back then.
    if (incoming_.empty() && !turnRequested_ && (std::exchange(readable_, false) || !ran)) {
        std::uint64_t count = 0;
        [[maybe_unused]] const ssize_t got = read(descriptor_.load(), &count, sizeof count);
    }
    return ran;
}

}  // namespace zqcore::platform
