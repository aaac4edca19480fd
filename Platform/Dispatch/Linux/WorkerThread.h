#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace zqcore::platform {

/// The calling thread's alternate signal stack: 64 KiB with a guard page below it, so that a signal handler
/// can report a stack overflow. Threads: made and ended on one thread. Lifetime: its end puts the earlier
/// stack back. Failure: without memory the thread keeps what it had.
class AlternateSignalStack final {
  public:
    static constexpr std::size_t kSize = std::size_t{64} * 1024;

    AlternateSignalStack() noexcept;
    ~AlternateSignalStack();
    AlternateSignalStack(const AlternateSignalStack&) = delete;
    AlternateSignalStack& operator=(const AlternateSignalStack&) = delete;

  private:
    void* mapping_ = nullptr;
    std::size_t mappedSize_ = 0;
    void* earlierStack_ = nullptr;
    std::size_t earlierSize_ = 0;
    int earlierFlags_ = 0;
};

/// Starts a thread of the layer's own, with an alternate signal stack, its maker's signal mask, and called
/// `name` (15 bytes are kept). It is never joined, so `body` may use only what lives as long as the process
/// or is held by it. An exception that leaves `body` ends the process with the throw's stack still standing.
/// Gives false if the system has no more threads.
bool startWorkerThread(const char* name, std::move_only_function<void()> body);

}  // namespace zqcore::platform
