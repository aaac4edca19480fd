#pragma once

#include <functional>
#include <memory>

#include "Platform/Base/Export.h"
#include "Platform/Dispatch/DispatchQueue.h"

namespace zqcore {

/// The process-wide serial queue, for whatever callers want done in order. Threads: any.
class ZQ_EXPORT ZQQueue final {
  public:
    ZQQueue() = delete;

    /// Label "com.tessara.ZQQueue.globalSerialQueue", unspecified quality. Made at the first use.
    [[nodiscard]] static const std::shared_ptr<DispatchQueue>& globalSerialQueue();
};

/// Runs `block` on the main queue: at once if the calling code runs there, else submitted, and the call
/// returns first. Judged by the queue's label, so code that a `sync` brought to another queue is submitted
/// even on the main thread. Any thread.
ZQ_EXPORT void ZQExecuteInMainQueue(DispatchBlock block);

}  // namespace zqcore
