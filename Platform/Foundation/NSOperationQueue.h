#pragma once

#include <utility>

#include "Platform/Dispatch/DispatchBlock.h"
#include "Platform/Dispatch/DispatchQueue.h"

namespace zqcore::platform {

/// The platform's main operation queue: blocks run on the main thread in the order of adding, never within
/// the call that adds them. Threads: any.
class NSOperationQueue final {
  public:
    [[nodiscard]] static const NSOperationQueue& mainQueue() noexcept {
        static constexpr NSOperationQueue queue;
        return queue;
    }
    void addOperationWithBlock(DispatchBlock block) const { DispatchQueue::main()->async(std::move(block)); }

  private:
    constexpr NSOperationQueue() = default;
};

}  // namespace zqcore::platform
