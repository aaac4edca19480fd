#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>

namespace zqcore::platform {

/// A word that threads sleep on (futex(2)). Wakes may be spurious, so callers test their own condition.
using FutexWord = std::atomic<std::uint32_t>;

/// Sleeps while `word` holds `expected`, at most for `limit` of real time. Gives false if the limit passed.
bool futexWait(FutexWord& word, std::uint32_t expected,
               std::optional<std::chrono::nanoseconds> limit = std::nullopt) noexcept;
void futexWakeOne(FutexWord& word) noexcept;

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
