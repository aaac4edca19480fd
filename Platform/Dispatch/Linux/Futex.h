#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>

#include "Platform/Base/ThreadSafety.h"

namespace zqcore::platform {

/// A word that threads sleep on (futex(2)). Wakes may be spurious, so callers test their own condition.
using FutexWord = std::atomic<std::uint32_t>;

/// Sleeps while `word` holds `expected`, at most for `limit` of real time. Gives false if the limit passed.
bool futexWait(FutexWord& word, std::uint32_t expected,
               std::optional<std::chrono::nanoseconds> limit = std::nullopt) noexcept;
void futexWakeOne(FutexWord& word) noexcept;

/// Tells the processor that the thread turns in a loop.
inline void pauseProcessor() noexcept {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("yield");
#endif
}

/// A mutual exclusion for sections of some tens of nanoseconds, a word long. Who finds it taken looks again
/// for about a microsecond before sleeping, since a holder that runs is nearly done. It doesn't give the
/// processor away meanwhile: on a busy machine it would come back milliseconds later. Not recursive, not
/// fair.
class ZQ_CAPABILITY("mutex") BriefMutex final {
  public:
    void lock() noexcept ZQ_ACQUIRE() ZQ_NO_THREAD_SAFETY_ANALYSIS {
        std::uint32_t free = 0;
        if (!word_.compare_exchange_strong(free, 1, std::memory_order_acquire)) [[unlikely]]
            lockTaken();
    }
    void unlock() noexcept ZQ_RELEASE() ZQ_NO_THREAD_SAFETY_ANALYSIS {
        if (word_.exchange(0, std::memory_order_release) == kSleepers) [[unlikely]]
            futexWakeOne(word_);
    }

  private:
    static constexpr std::uint32_t kSleepers = 2;
    void lockTaken() noexcept;
    FutexWord word_{0};
};

/// Holds a `BriefMutex` while it lives.
class ZQ_SCOPED_CAPABILITY BriefLock final {
  public:
    explicit BriefLock(BriefMutex& mutex) noexcept ZQ_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
    ~BriefLock() ZQ_RELEASE() { mutex_.unlock(); }
    BriefLock(const BriefLock&) = delete;
    BriefLock& operator=(const BriefLock&) = delete;

  private:
    BriefMutex& mutex_;
};

/// One thread waits until another says so, once. The waker touches nothing after the waiter may have gone.
class OneShotSignal final {
  public:
    void signal() noexcept {
        word_.store(1, std::memory_order_release);
        futexWakeOne(word_);
    }
    [[nodiscard]] bool isSignalled() const noexcept { return word_.load(std::memory_order_acquire) != 0; }
    void wait() noexcept {
        while (word_.load(std::memory_order_acquire) == 0) futexWait(word_, 0);
    }

  private:
    FutexWord word_{0};
};

}  // namespace zqcore::platform
