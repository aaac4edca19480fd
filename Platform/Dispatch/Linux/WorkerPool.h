#pragma once

#include <sys/types.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/Linux/Futex.h"

namespace zqcore::platform {

/// A serial queue as the pool sees it: something that has work and is run by one worker at a time.
class Drainable {
  public:
    virtual ~Drainable() = default;
    /// Runs what is queued. It may hand itself back to the pool to let others run.
    virtual void drain(const std::shared_ptr<Drainable>& self) = 0;
};

/// The threads behind all queues but the main one. A few run side by side; while some of them wait on
/// something, others take their place: at once if they said so (`DispatchBlockingScope`), else as soon as the
/// monitor has seen that work waits and nothing moves. Idle threads end after a while, but for one, which
/// sleeps without a time-out, so that a process at rest has one sleeping worker and no wake-ups.
/// Threads: every operation from any. Lifetime: the process.
class WorkerPool final {
  public:
    /// Blocks of global queues that may be under way at once, blocked ones counted.
    static constexpr std::size_t kGlobalLimit = 64;

    static WorkerPool& shared();

    /// Runs `queue.drain` on a worker.
    void submit(std::shared_ptr<Drainable> queue, DispatchQoS qos);
    /// Runs `block` on a worker, on behalf of `global`, which lives for ever.
    void submit(DispatchBlock block, const DispatchQueue& global, DispatchQoS qos);

    /// Whether ready work waits for a thread: then a long runner had better make room. A hint.
    [[nodiscard]] bool contended() const noexcept { return ready_.load(std::memory_order_relaxed) != 0; }

    /// Whether the calling thread is one of the pool's.
    [[nodiscard]] static bool isWorker() noexcept;

    /// The calling thread is about to wait for something outside, or goes on. Give false on foreign threads.
    bool beginBlocking() noexcept;
    void endBlocking() noexcept;

    // For the clock driver.

    /// Code runs on behalf of a queue, or is about to, on a thread that no worker count covers: inside
    /// `sync`, or on its way back from one, or on a queue with a thread of its own. Counted before it can run
    /// and until it can't go on.
    void beginForeignRun() noexcept { foreignRuns_.fetch_add(1); }
    void endForeignRun() noexcept;
    /// The same for the time of a block's run on the calling thread, which doesn't wait for itself.
    static void holdForeignRun(int difference) noexcept { foreignRunsHeld_ += difference; }
    /// Returns when no block is ready or runs, threads in a blocking scope and the caller's own runs left
    /// out, or `interrupted` says so. It is asked under the pool's lock.
    void waitUntilQuiet(const std::function<bool()>& interrupted);
    /// Makes `waitUntilQuiet` ask again.
    void pokeObservers() noexcept;

    /// Calls a thread for what waits, if one was not to be had.
    void tryAgain();

    /// Workers alive, for tests and diagnosis.
    [[nodiscard]] std::size_t threadCount();

  private:
    static constexpr std::size_t kLevels = 5;

    struct GlobalItem {
        DispatchBlock block;
        const DispatchQueue* queue = nullptr;
    };
    struct Level {
        std::deque<std::shared_ptr<Drainable>> serial;
        std::deque<GlobalItem> global;
        // Of `global` since it gave its memory back.
        std::size_t longest = 0;
    };
    struct Worker {
        FutexWord wake{0};
        pid_t thread = 0;
        int blockingDepth = 0;
        // Under the pool's lock: the taking that brought what it runs, 0 while it rests; and whether it is in
        // a blocking scope.
        std::uint64_t item = 0;
        bool blocks = false;
    };
    struct Item {
        std::shared_ptr<Drainable> serial;
        GlobalItem global;
    };

    WorkerPool();
    ~WorkerPool() = delete;

    static std::size_t levelOf(DispatchQoS qos) noexcept;
    bool take(Item& item);
    bool takeFrom(Level& level, Item& item);
    [[nodiscard]] bool runnable() const noexcept;
    Worker* callWorker(bool beyondConcurrency = false);
    void wake(Worker* worker);
    void work();
    void run(Item& item);
    bool rest(Worker& me, std::unique_lock<std::mutex>& lock);
    void noteQuiet() noexcept;
    [[nodiscard]] bool isQuiet() const noexcept;
    void watchProgress();
    void ensureMonitor();
    std::size_t workersOnProcessor();
    void replaceHeld(std::uint64_t longAgo);

    std::mutex mutex_;
    std::array<Level, kLevels> levels_;
    std::atomic<std::size_t> ready_{0};
    std::size_t serialReady_ = 0;
    std::size_t globalReady_ = 0;
    std::size_t globalRunning_ = 0;
    std::size_t threads_ = 0;
    // Workers that run or were told to; those in a blocking scope don't count.
    std::size_t active_ = 0;
    std::uint64_t taken_ = 0;
    const std::size_t concurrency_;
    std::vector<Worker*> workers_;
    std::vector<Worker*> idle_;

    bool monitorRuns_ = false;
    bool monitorSleeps_ = false;
    FutexWord monitorWake_{0};

    // Both are changed without the lock, each before the other is read, so that of the last run's end and a
    // waiter's beginning one sees the other.
    std::atomic<int> foreignRuns_{0};
    std::atomic<int> observers_{0};
    std::condition_variable quiet_;

    static thread_local Worker* current_;
    static thread_local int foreignRunsHeld_;
};

}  // namespace zqcore::platform
