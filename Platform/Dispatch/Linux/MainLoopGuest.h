#pragma once

#include <atomic>
#include <cstdint>

namespace zqcore::platform {

/// Puts descriptors of its own into the set that the main thread sleeps on in its loop, so that what they
/// bring for the main thread needs no other thread to be woken first. While the main thread is busy, or
/// sleeps in a loop that is not ours, nobody looks at them there: the guest has a second watch of its own.
/// Threads: both calls come on the main thread, between two blocks of its queue. Lifetime: the process.
/// Failure: none; what the guest runs must not throw.
class MainLoopGuest {
  public:
    /// What an event of a guest's descriptor carries as `data.u64`.
    static constexpr std::uint64_t kKey = ~std::uint64_t{0};

    /// The main thread is about to sleep on this epoll(7) descriptor for the first time.
    virtual void join(int epoll) noexcept = 0;
    /// One of the guest's descriptors woke it.
    virtual void ready() noexcept = 0;

    /// The one guest there is.
    static void install(MainLoopGuest& guest) noexcept {
        installed_.store(&guest, std::memory_order_release);
    }
    [[nodiscard]] static MainLoopGuest* installed() noexcept {
        return installed_.load(std::memory_order_acquire);
    }

  protected:
    MainLoopGuest() = default;
    ~MainLoopGuest() = default;
    MainLoopGuest(const MainLoopGuest&) = delete;
    MainLoopGuest& operator=(const MainLoopGuest&) = delete;

  private:
    static inline std::atomic<MainLoopGuest*> installed_{nullptr};
};

}  // namespace zqcore::platform
