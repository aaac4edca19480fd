#include "Platform/Dispatch/Linux/WorkerPool.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <thread>
#include <utility>

#include "Platform/Dispatch/Linux/CurrentQueue.h"
#include "Platform/Dispatch/Linux/WorkerThread.h"

namespace zqcore::platform {

namespace {

using namespace std::chrono_literals;

// Serial queues are never held back by blocked global blocks, but threads are not endless either.
constexpr std::size_t kThreadLimit = 512;
constexpr auto kIdleTime = 5s;
constexpr auto kMonitorTick = 2ms;
// So many ticks without movement count as blocked even if the processors are busy.
constexpr int kPatience = 25;
// So many ticks that one item takes, while others come and go, count as blocked if its thread sleeps.
constexpr std::size_t kHeldTicks = 5;
// Every so many picks the lowest quality goes first, so that it can't starve.
constexpr std::uint64_t kFairness = 61;
// A list of waiting blocks that was longer gives its memory back.
constexpr std::size_t kKept = 1024;

bool isOnProcessor(pid_t thread) {
    char path[64];
    std::snprintf(path, sizeof path, "/proc/self/task/%d/stat", static_cast<int>(thread));
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) return false;
    char text[128];
    const ssize_t size = read(file, text, sizeof text - 1);
    close(file);
    if (size <= 0) return false;
    text[size] = 0;
    // The state letter stands behind the thread's name, which is in parentheses (proc(5)).
    const char* end = std::strrchr(text, ')');
    return end && end[1] == ' ' && end[2] == 'R';
}

}  // namespace

thread_local constinit WorkerPool::Worker* WorkerPool::current_ = nullptr;
thread_local constinit int WorkerPool::foreignRunsHeld_ = 0;

WorkerPool& WorkerPool::shared() {
    // Never ended: workers run until the process is gone.
    static WorkerPool& pool = *new WorkerPool;
    return pool;
}

WorkerPool::WorkerPool() : concurrency_(std::max(4U, std::thread::hardware_concurrency())) {}

std::size_t WorkerPool::levelOf(DispatchQoS qos) noexcept {
    switch (qos) {
        case DispatchQoS::userInteractive:
            return 0;
        case DispatchQoS::userInitiated:
            return 1;
        case DispatchQoS::utility:
            return 3;
        case DispatchQoS::background:
            return 4;
        default:
            return 2;
    }
}

void WorkerPool::submit(std::shared_ptr<Drainable> queue, DispatchQoS qos) {
    std::unique_lock lock(mutex_);
    levels_[levelOf(qos)].serial.push_back(std::move(queue));
    ++serialReady_;
    ready_.fetch_add(1, std::memory_order_relaxed);
    Worker* worker = callWorker();
    lock.unlock();
    wake(worker);
}

void WorkerPool::submit(DispatchBlock block, const DispatchQueue& global, DispatchQoS qos) {
    std::unique_lock lock(mutex_);
    Level& level = levels_[levelOf(qos)];
    level.global.push_back({std::move(block), &global});
    level.longest = std::max(level.longest, level.global.size());
    ++globalReady_;
    ready_.fetch_add(1, std::memory_order_relaxed);
    Worker* worker = callWorker();
    lock.unlock();
    wake(worker);
}

bool WorkerPool::runnable() const noexcept {
    return serialReady_ > 0 || (globalReady_ > 0 && globalRunning_ < kGlobalLimit);
}

// Finds a thread for ready work, under the lock: the sleeping worker that the caller shall wake, or null if
// none is needed or a new one was started.
WorkerPool::Worker* WorkerPool::callWorker(bool beyondConcurrency) {
    if (!runnable()) return nullptr;
    if (active_ >= concurrency_ && !beyondConcurrency) {
        ensureMonitor();
        return nullptr;
    }
    if (!idle_.empty()) {
        Worker* worker = idle_.back();
        idle_.pop_back();
        ++active_;
        return worker;
    }
    if (threads_ >= kThreadLimit) return nullptr;
    ++threads_;
    ++active_;
    if (!startWorkerThread("zq.worker", [this] { work(); })) {
        // Nothing is lost: the work stays queued. The monitor tries again, or without one who comes next.
        --threads_;
        --active_;
        ensureMonitor();
    }
    return nullptr;
}

void WorkerPool::tryAgain() {
    std::unique_lock lock(mutex_);
    Worker* worker = callWorker();
    lock.unlock();
    wake(worker);
}

void WorkerPool::wake(Worker* worker) {
    if (!worker) return;
    worker->wake.store(1, std::memory_order_release);
    futexWakeOne(worker->wake);
}

bool WorkerPool::takeFrom(Level& level, Item& item) {
    if (!level.serial.empty()) {
        item.serial = std::move(level.serial.front());
        level.serial.pop_front();
        --serialReady_;
    } else if (!level.global.empty() && globalRunning_ < kGlobalLimit) {
        item.global = std::move(level.global.front());
        level.global.pop_front();
        if (level.global.empty() && level.longest > kKept) {
            std::deque<GlobalItem>().swap(level.global);
            level.longest = 0;
        }
        --globalReady_;
        ++globalRunning_;
    } else {
        return false;
    }
    ready_.fetch_sub(1, std::memory_order_relaxed);
    ++taken_;
    return true;
}

bool WorkerPool::take(Item& item) {
    if (!runnable()) return false;
    if (taken_ % kFairness == kFairness - 1)
        return std::any_of(levels_.rbegin(), levels_.rend(),
                           [&](Level& level) { return takeFrom(level, item); });
    return std::any_of(levels_.begin(), levels_.end(), [&](Level& level) { return takeFrom(level, item); });
}

void WorkerPool::run(Item& item) {
    if (item.serial) {
        item.serial->drain(item.serial);
        item.serial.reset();
    } else {
        const CurrentQueueScope scope(item.global.queue);
        item.global.block();
        item.global.block.reset();
    }
}

void WorkerPool::work() {
    Worker me;
    me.thread = static_cast<pid_t>(syscall(SYS_gettid));
    current_ = &me;
    std::unique_lock lock(mutex_);
    workers_.push_back(&me);
    do {
        for (Item item; take(item);) {
            const bool global = !item.serial;
            me.item = taken_;
            lock.unlock();
            run(item);
            lock.lock();
            if (global) --globalRunning_;
        }
    } while (rest(me, lock));
    std::erase(workers_, &me);
    --threads_;
    current_ = nullptr;
}

// Sleeps until there is work. Gives false if there was none for a while and the thread shall end.
bool WorkerPool::rest(Worker& me, std::unique_lock<std::mutex>& lock) {
    const bool keeper = idle_.empty();
    me.item = 0;
    me.wake.store(0, std::memory_order_relaxed);
    idle_.push_back(&me);
    --active_;
    noteQuiet();
    lock.unlock();
    const auto called = [&me] { return me.wake.load(std::memory_order_acquire) != 0; };
    const auto limit = keeper ? std::nullopt : std::optional<std::chrono::nanoseconds>(kIdleTime);
    while (!called() && futexWait(me.wake, 0, limit)) {
    }
    lock.lock();
    if (called()) return true;
    // Time is up. Who isn't in the list any more has been called at the last moment.
    const auto mine = std::find(idle_.begin(), idle_.end(), &me);
    if (mine != idle_.end()) {
        idle_.erase(mine);
        return false;
    }
    lock.unlock();
    while (!called()) futexWait(me.wake, 0);
    lock.lock();
    return true;
}

bool WorkerPool::isWorker() noexcept { return current_ != nullptr; }

bool WorkerPool::beginBlocking() noexcept {
    Worker* me = current_;
    if (!me) return false;
    if (me->blockingDepth++ > 0) return true;
    std::unique_lock lock(mutex_);
    me->blocks = true;
    --active_;
    Worker* worker = callWorker();
    noteQuiet();
    lock.unlock();
    wake(worker);
    return true;
}

void WorkerPool::endBlocking() noexcept {
    if (--current_->blockingDepth > 0) return;
    const std::lock_guard lock(mutex_);
    current_->blocks = false;
    ++active_;
}

std::size_t WorkerPool::threadCount() {
    const std::lock_guard lock(mutex_);
    return threads_;
}

// The monitor: a thread that exists only while all workers are taken and work waits, and a little longer.

void WorkerPool::ensureMonitor() {
    if (!monitorRuns_) {
        monitorRuns_ = startWorkerThread("zq.monitor", [this] { watchProgress(); });
    } else if (monitorSleeps_) {
        monitorSleeps_ = false;
        monitorWake_.fetch_add(1, std::memory_order_release);
        futexWakeOne(monitorWake_);
    }
}

void WorkerPool::watchProgress() {
    std::unique_lock lock(mutex_);
    int stillTicks = 0;
    std::array<std::uint64_t, kHeldTicks> takenBefore{};
    for (std::size_t tick = 0;; ++tick) {
        const std::uint64_t seen = taken_;
        const std::uint64_t longAgo = std::exchange(takenBefore[tick % kHeldTicks], seen);
        const std::uint32_t call = monitorWake_.load(std::memory_order_relaxed);
        const bool rests = !runnable();
        monitorSleeps_ = rests;
        lock.unlock();
        const bool called =
            futexWait(monitorWake_, call, rests ? std::chrono::nanoseconds(kIdleTime) : kMonitorTick);
        lock.lock();
        if (rests && !called && monitorSleeps_) {
            monitorRuns_ = false;
            return;
        }
        monitorSleeps_ = false;
        if (!runnable() || taken_ != seen || rests) {
            stillTicks = 0;
            replaceHeld(longAgo);
            continue;
        }
        // Nothing was taken for a whole tick. Blocked workers don't count any more from here on; busy ones
        // get time before they are given company.
        const std::size_t busy = workersOnProcessor();
        std::size_t wanted = busy < concurrency_ ? concurrency_ - busy : 0;
        if (++stillTicks >= kPatience) wanted = std::max<std::size_t>(wanted, 1);
        if (wanted == 0) continue;
        stillTicks = 0;
        for (wanted = std::min(wanted, serialReady_ + globalReady_); wanted > 0; --wanted) {
            wake(callWorker(/*beyondConcurrency=*/true));
        }
    }
}

// While some workers move, others may have held what they took for long. Those of them that sleep don't
// count.
void WorkerPool::replaceHeld(std::uint64_t longAgo) {
    const auto holds = [longAgo](const Worker* worker) {
        return worker->item != 0 && worker->item <= longAgo && !worker->blocks;
    };
    const auto count = [this](const auto& test) {
        return static_cast<std::size_t>(std::count_if(workers_.begin(), workers_.end(), test));
    };
    if (!runnable() || active_ >= concurrency_ + count(holds)) return;
    const std::size_t limit = concurrency_ + count([&holds](const Worker* worker) {
                                  return holds(worker) && !isOnProcessor(worker->thread);
                              });
    for (std::size_t missing = limit > active_ ? limit - active_ : 0; missing > 0; --missing) {
        wake(callWorker(/*beyondConcurrency=*/true));
    }
}

std::size_t WorkerPool::workersOnProcessor() {
    return static_cast<std::size_t>(std::count_if(workers_.begin(), workers_.end(), [](const Worker* worker) {
        return isOnProcessor(worker->thread);
    }));
}

// Quietness, for the clock driver.

// A global block that waits behind as many as may be under way can't move: they all wait for something.
bool WorkerPool::isQuiet() const noexcept { return active_ == 0 && !runnable() && foreignRuns_ == 0; }

void WorkerPool::noteQuiet() noexcept {
    if (observers_ != 0 && isQuiet()) quiet_.notify_all();
}

void WorkerPool::endForeignRun() noexcept {
    if (foreignRuns_.fetch_sub(1) == 1 && observers_ != 0) pokeObservers();
}

// The caller has made its change visible: a waiter that came too late to be seen here will see that.
void WorkerPool::pokeObservers() noexcept {
    if (observers_ == 0) return;
    const std::lock_guard lock(mutex_);
    quiet_.notify_all();
}

void WorkerPool::waitUntilQuiet(const std::function<bool()>& interrupted) {
    const int held = foreignRunsHeld_;
    ++observers_;
    foreignRuns_ -= held;
    {
        std::unique_lock lock(mutex_);
        quiet_.wait(lock, [&] { return isQuiet() || interrupted(); });
    }
    foreignRuns_ += held;
    --observers_;
}

}  // namespace zqcore::platform
