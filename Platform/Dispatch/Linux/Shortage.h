#pragma once

#include <atomic>
#include <cstdint>

namespace zqcore::platform {

/// That a thread or a descriptor was not to be had. What lacks one keeps its work and tries again: with the
/// next work that comes, and as soon as the main loop asks it to, which it does every so often while the
/// shortage lasts. Threads: any.
class Shortage final {
  public:
    Shortage() = delete;

    /// Under any lock but the main queue's.
    static void note() noexcept;
    [[nodiscard]] static bool isFelt() noexcept { return notes_.load(std::memory_order_relaxed) != 0; }
    /// Lets the workers and the deadlines make what they lack. Under no lock.
    static void tryAgain();

  private:
    static inline constinit std::atomic<std::uint32_t> notes_{0};
};

}  // namespace zqcore::platform
