#pragma once

#include <functional>
#include <source_location>
#include <string_view>

#include "Platform/Base/Export.h"
#include "Platform/Dispatch/DispatchQueue.h"

namespace zqcore {

/// The class-level operations that the library adds to `DispatchQueue`. Threads: any.
class ZQ_EXPORT DispatchQueueExtension final {
  public:
    DispatchQueueExtension() = delete;

    /// Runs `work` at once on the main thread, whatever queue is current there; else submits it to the main
    /// queue.
    static void safeMain(DispatchBlock work);

    /// Runs `block` the first time that this process sees `token`. It runs under the one lock of all tokens,
    /// which a nested call on the same thread passes; so it must return, and must not wait for another thread
    /// that calls `once`. The token counts as seen before `block` starts.
    static void once(std::string_view token, const std::function<void()>& block);
    /// The same for a place in the source: file, function and line are the token.
    static void once(const std::function<void()>& block,
                     const std::source_location& where = std::source_location::current());
};

}  // namespace zqcore
