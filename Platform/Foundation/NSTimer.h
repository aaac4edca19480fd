#pragma once

#include <functional>
#include <memory>

#include "Platform/Base/Clock.h"
#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"

namespace zqcore::platform {

/// In which states of the main loop a timer fires: only while it waits as usual, or also while a control is
/// pressed and an alert is open.
enum class NSRunLoopMode { defaultMode, eventTracking, modalPanel, commonModes };

/// A timer of the main loop. Time: `Clock::current()`, seconds; 0 or less counts as 0.0001. Missed firings of
/// a repeating timer come as one. Threads: main thread. Lifetime: the loop keeps a scheduled timer until it
/// is invalid; a one-shot is invalid after firing. Failure: a block that throws costs one log line.
class ZQ_EXPORT NSTimer final : public NSObject {
  public:
    using Block = std::function<void(NSTimer&)>;
    /// A timer that waits for `addToMainRunLoop`.
    [[nodiscard]] static std::shared_ptr<NSTimer> timerWithTimeInterval(double interval, bool repeats,
                                                                        Block block);
    /// A timer that is added for the default mode already; it counts from now.
    static std::shared_ptr<NSTimer> scheduledTimerWithTimeInterval(double interval, bool repeats,
                                                                   Block block);

    /// Lets the main loop keep and fire it. The interval counts from the creation.
    void addToMainRunLoop(NSRunLoopMode mode);
    /// Ends it for good; its block goes at once, or after its present call.
    void invalidate();
    [[nodiscard]] bool isValid() const noexcept { return valid_; }
    [[nodiscard]] double timeInterval() const noexcept { return interval_; }
    /// Fires now, apart from the plan; a one-shot is then invalid.
    void fire();

    /// What the main loop does now; the application sets it for presses and alerts. Timers of the default
    /// mode that came due meanwhile fire when it is back.
    static void setMainRunLoopMode(NSRunLoopMode mode);
    /// Lets the main loop forget all its timers.
    static void invalidateAllForTesting();
    [[nodiscard]] static NSRunLoopMode mainRunLoopMode();

  private:
    friend class MainLoopTimers;
    template <class T, class... Arguments>
    friend std::shared_ptr<T> makeObject(Arguments&&...);
    NSTimer(double interval, bool repeats, Block block);
    std::shared_ptr<NSTimer> self();

    double interval_;
    bool repeats_;
    bool valid_ = true;
    bool added_ = false;
    NSRunLoopMode mode_ = NSRunLoopMode::defaultMode;
    Clock::Instant fireAt_;
    std::uint64_t order_ = 0;
    Block block_;
};

}  // namespace zqcore::platform
