#pragma once

#include <functional>
#include <memory>

#include "Platform/Base/Export.h"
#include "Platform/Dispatch/DispatchQueue.h"

namespace zqcore::platform {

/// A timer source: one deadline, then every interval after it, on a queue.
/// Time: nanoseconds, on the wall or the monotonic base of its start. Missed firings come as one call; on the
/// wall base setting the clock moves the deadlines. Deadlines are start + N intervals, so lateness does not
/// add up. Threads: every operation from any thread; the handler runs on the queue, one call at a time.
/// Lifetime: dropping the last reference cancels. Cancelling is asynchronous and idempotent: a handler under
/// way may finish; cancelled on its own queue, none follows. Failure: an interval of 0 counts as 1 ns; a
/// negative one fires once at once and never again.
class ZQ_EXPORT DispatchSourceTimer {
  public:
    /// A null `queue` stands for the global one of standard quality, as on the platform.
    [[nodiscard]] static std::shared_ptr<DispatchSourceTimer> make(
        const std::shared_ptr<DispatchQueue>& queue);
    virtual ~DispatchSourceTimer() = default;

    /// Before `resume`: first deadline and period. A period of `Clock::Duration::max()` fires once.
    virtual void schedule(DispatchTime start, Clock::Duration interval) = 0;
    virtual void setEventHandler(std::function<void()> handler) = 0;
    /// Starts the source; a second call does nothing.
    virtual void resume() = 0;
    virtual void cancel() = 0;
};

}  // namespace zqcore::platform
