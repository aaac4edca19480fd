#pragma once

#include "Platform/Dispatch/DispatchQueue.h"

namespace zqcore::platform {

/// Makes `queue` the one that the calling thread's code runs on, until the scope ends.
class CurrentQueueScope final {
  public:
    explicit CurrentQueueScope(const DispatchQueue* queue) noexcept : outer_(current_) { current_ = queue; }
    ~CurrentQueueScope() { current_ = outer_; }
    CurrentQueueScope(const CurrentQueueScope&) = delete;
    CurrentQueueScope& operator=(const CurrentQueueScope&) = delete;

    /// Null outside every block.
    [[nodiscard]] static const DispatchQueue* current() noexcept { return current_; }

  private:
    static inline thread_local constinit const DispatchQueue* current_ = nullptr;
    const DispatchQueue* outer_;
};

}  // namespace zqcore::platform
