#include "Platform/Dispatch/Linux/Futex.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

namespace zqcore::platform {

bool futexWait(FutexWord& word, std::uint32_t expected,
               std::optional<std::chrono::nanoseconds> limit) noexcept {
    timespec relative{};
    if (limit) {
        relative.tv_sec = limit->count() / 1'000'000'000;
        relative.tv_nsec = limit->count() % 1'000'000'000;
    }
    const long result =
        syscall(SYS_futex, &word, FUTEX_WAIT_PRIVATE, expected, limit ? &relative : nullptr, nullptr, 0);
    return result == 0 || errno != ETIMEDOUT;
}

void futexWakeOne(FutexWord& word) noexcept {
    // The word may be gone by now; the kernel then answers with an error and nothing else happens.
    syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
}

void BriefMutex::lockTaken() noexcept {
    constexpr int kLooks = 30;
    for (int i = 0; i < kLooks; ++i) {
        std::uint32_t free = 0;
        if (word_.load(std::memory_order_relaxed) == 0 &&
            word_.compare_exchange_strong(free, 1, std::memory_order_acquire))
            return;
        pauseProcessor();
    }
    while (word_.exchange(kSleepers, std::memory_order_acquire) != 0) futexWait(word_, kSleepers);
}

}  // namespace zqcore::platform
