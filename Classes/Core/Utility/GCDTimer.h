#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>

#include "Platform/Base/Export.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/DispatchSourceTimer.h"

namespace zqcore {

/// A one-shot or repeating timer on a dispatch queue.
/// Time: wall clock, in seconds; the first firing comes one interval after `fire`, never at once. Setting the
/// clock moves the firings, and missed ones come as one. Threads: `fire` and `invalidate` from any; the
/// handler runs on `queue`, under no lock. A firing under way while another thread invalidates may still call
/// it once. Lifetime: the owner keeps the timer; the running source holds it weakly, so dropping the last
/// reference ends it. It can't be started again. Failure: none. A second `fire`, or one after `invalidate`,
/// does nothing; an interval of 0 or less goes to the source as it is; a null queue stands for the global one
/// of standard quality.
class ZQ_EXPORT GCDTimer final : public std::enable_shared_from_this<GCDTimer> {
    struct Private {};

  public:
    using Handler = std::function<void(GCDTimer&)>;

    /// A timer at rest.
    [[nodiscard]] static std::shared_ptr<GCDTimer> make(double timeInterval, bool repeats,
                                                        const std::shared_ptr<DispatchQueue>& queue,
                                                        Handler handler);
    GCDTimer(Private, double interval, bool repeating, const std::shared_ptr<DispatchQueue>& target,
             Handler call);
    ~GCDTimer();
    GCDTimer(const GCDTimer&) = delete;
    GCDTimer& operator=(const GCDTimer&) = delete;

    /// Starts the timer, once.
    void fire();
    /// Stops it for good.
    void invalidate();

    const double timeInterval;
    const bool repeats;
    const std::shared_ptr<DispatchQueue> queue;
    const Handler handler;

  private:
    void firing();

    std::recursive_mutex lock_;
    std::shared_ptr<DispatchSourceTimer> timer_;
    bool hadResume_ = false;
    // Read by a firing without the lock.
    std::atomic<bool> hadInvalidate_{false};
};

}  // namespace zqcore
