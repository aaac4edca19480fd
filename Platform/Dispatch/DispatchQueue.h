#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"
#include "Platform/Dispatch/DispatchBlock.h"
#include "Platform/Dispatch/DispatchTime.h"

namespace zqcore::platform {

/// Quality of service, in the platform's numbers. It is a hint; order and exclusion never depend on it.
enum class DispatchQoS : unsigned {
    unspecified = 0,
    background = 9,
    utility = 17,
    standard = 21,
    userInitiated = 25,
    userInteractive = 33,
};

/// A queue of blocks: serial (one at a time, in the order of submission), global (side by side) or main (on
/// the main thread, drained by the run loop). Time: delays by `Clock::current()`. Threads: any. Lifetime:
/// held by `std::shared_ptr`; submitted work keeps its queue until it has run. Failure: `sync` onto the queue
/// that is running waits for ever, as on the platform; in a child of fork(2) without exec no queue runs.
class ZQ_EXPORT DispatchQueue : public std::enable_shared_from_this<DispatchQueue> {
  public:
    /// A new serial queue. An empty label is allowed.
    [[nodiscard]] static std::shared_ptr<DispatchQueue> serial(std::string label,
                                                               DispatchQoS qos = DispatchQoS::unspecified);
    /// The main queue, label "com.apple.main-thread".
    [[nodiscard]] static const std::shared_ptr<DispatchQueue>& main();
    /// The shared queue of that quality. It adds threads, 64 at most, while blocks wait on something: at once
    /// in a `DispatchBlockingScope`, else soon; and one by one while blocks only compute and others wait.
    [[nodiscard]] static const std::shared_ptr<DispatchQueue>& global(
        DispatchQoS qos = DispatchQoS::standard);

    virtual ~DispatchQueue() = default;

    /// Submits `block`; never runs it inside the call.
    virtual void async(DispatchBlock block) = 0;
    /// Submits `block` when `time` has come; a time in the past submits it at once.
    void after(DispatchTime time, DispatchBlock block);
    /// Runs `block` in its turn on this queue and returns when it has ended. It runs on the calling thread,
    /// with this queue's label; the main queue's runs on the main thread.
    virtual void sync(const std::function<void()>& block) = 0;

    [[nodiscard]] virtual const std::string& label() const noexcept = 0;
    [[nodiscard]] virtual DispatchQoS qos() const noexcept = 0;

    /// The label of the queue (not the thread) that the calling code runs on: outside any block the main
    /// queue's on the main thread, that of a default root queue elsewhere. Safe in a signal handler.
    [[nodiscard]] static std::string_view currentLabel() noexcept;
};

/// Tells the global queues that this thread is about to wait for something outside (a lock, a call to another
/// process), so that they may start another thread at once. Costs nothing on other threads.
class ZQ_EXPORT DispatchBlockingScope final {
  public:
    DispatchBlockingScope() noexcept;
    ~DispatchBlockingScope();
    DispatchBlockingScope(const DispatchBlockingScope&) = delete;
    DispatchBlockingScope& operator=(const DispatchBlockingScope&) = delete;

  private:
    bool counted_;
};

/// Whether the calling thread is the process's main thread: the one that started it.
[[nodiscard]] ZQ_EXPORT bool isMainThread() noexcept;

}  // namespace zqcore::platform
