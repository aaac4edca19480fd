#include "Platform/Foundation/NSTimer.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <set>
#include <utility>

#include "Platform/Base/NSLog.h"
#include "Platform/Dispatch/DispatchSourceTimer.h"
#include "Platform/Dispatch/RunLoop.h"

namespace zqcore::platform {

/// The timers that the main loop keeps, and the one alarm that wakes it for the earliest.
class MainLoopTimers {
  public:
    static MainLoopTimers& shared() {
        // Never ended: timers may be invalidated while the process goes.
        static MainLoopTimers& timers = *new MainLoopTimers;
        return timers;
    }

    void add(const std::shared_ptr<NSTimer>& timer) {
        timer->order_ = ++lastOrder_;
        timers_.insert(timer);
        setAlarm();
    }
    void remove(const NSTimer& timer) {
        const auto found = timers_.find(timer);
        if (found == timers_.end()) return;
        const auto held = timers_.extract(found);
        setAlarm();
    }
    void removeAll() {
        for (const auto& timer : std::exchange(timers_, {})) timer->invalidate();
        setAlarm();
    }
    void setMode(NSRunLoopMode mode) {
        if (std::exchange(mode_, mode) == mode) return;
        setAlarm();
        RunLoop::main().requestTurn();
    }
    [[nodiscard]] NSRunLoopMode mode() const noexcept { return mode_; }

  private:
    /// The next to fire first; of those due at once the one that was added first.
    struct Earlier {
        using is_transparent = void;
        static const NSTimer& timer(const NSTimer& one) noexcept { return one; }
        static const NSTimer& timer(const std::shared_ptr<NSTimer>& one) noexcept { return *one; }
        bool operator()(const auto& a, const auto& b) const noexcept {
            const NSTimer& one = timer(a);
            const NSTimer& other = timer(b);
            return std::pair(one.fireAt_, one.order_) < std::pair(other.fireAt_, other.order_);
        }
    };

    MainLoopTimers() {
        RunLoop::main().setTurnHandler(RunLoop::TurnPart::beforeQueue, [this] { fireDue(); });
    }

    [[nodiscard]] bool runsNow(const NSTimer& timer) const {
        return timer.mode_ == NSRunLoopMode::commonModes || timer.mode_ == mode_;
    }
    [[nodiscard]] std::shared_ptr<NSTimer> earliest() const {
        const auto found = std::ranges::find_if(timers_, [this](const auto& one) { return runsNow(*one); });
        return found == timers_.end() ? nullptr : *found;
    }

    void fireDue() {
        // Most turns are for something else.
        const Clock::Instant now = Clock::current().now();
        if (!alarmAt_ || *alarmAt_ > now) return;
        // What a firing adds is due later than now, so this ends.
        for (auto timer = earliest(); timer && timer->fireAt_ <= now; timer = earliest()) plan(*timer, now);
        setAlarm();
    }
    void plan(NSTimer& timer, Clock::Instant now) {
        const auto held = timer.self();
        if (timer.repeats_) {
            const auto interval =
                std::chrono::duration_cast<Clock::Duration>(std::chrono::duration<double>(timer.interval_));
            auto entry = timers_.extract(timers_.find(timer));
            timer.fireAt_ = timer.fireAt_ + interval * ((now - timer.fireAt_) / interval + 1);
            timers_.insert(std::move(entry));
        }
        timer.fire();
    }

    void setAlarm() {
        const auto next = earliest();
        const std::optional<Clock::Instant> at = next ? std::optional(next->fireAt_) : std::nullopt;
        if (at == alarmAt_ && (!at || Clock::current().now() < *at)) return;
        alarmAt_ = at;
        alarm_.reset();
        if (!at) return;
        alarm_ = DispatchSourceTimer::make(DispatchQueue::main());
        alarm_->schedule(DispatchTime::now(*at - Clock::current().now()), Clock::Duration::max());
        // The turn that it brings fires what is due.
        alarm_->setEventHandler([] {});
        alarm_->resume();
    }

    std::set<std::shared_ptr<NSTimer>, Earlier> timers_;
    std::shared_ptr<DispatchSourceTimer> alarm_;
    std::optional<Clock::Instant> alarmAt_;
    std::uint64_t lastOrder_ = 0;
    NSRunLoopMode mode_ = NSRunLoopMode::defaultMode;
};

NSTimer::NSTimer(double interval, bool repeats, Block block)
    : interval_(interval > 0 ? std::min(interval, 1e9) : 0.0001),
      repeats_(repeats),
      block_(std::move(block)) {
    fireAt_ = Clock::current().now() +
              std::chrono::duration_cast<Clock::Duration>(std::chrono::duration<double>(interval_));
}

std::shared_ptr<NSTimer> NSTimer::self() { return std::static_pointer_cast<NSTimer>(shared_from_this()); }

std::shared_ptr<NSTimer> NSTimer::timerWithTimeInterval(double interval, bool repeats, Block block) {
    return makeObject<NSTimer>(interval, repeats, std::move(block));
}

std::shared_ptr<NSTimer> NSTimer::scheduledTimerWithTimeInterval(double interval, bool repeats, Block block) {
    auto timer = timerWithTimeInterval(interval, repeats, std::move(block));
    timer->addToMainRunLoop(NSRunLoopMode::defaultMode);
    return timer;
}

void NSTimer::addToMainRunLoop(NSRunLoopMode mode) {
    if (!valid_ || std::exchange(added_, true)) return;
    mode_ = mode;
    MainLoopTimers::shared().add(self());
}

void NSTimer::invalidate() {
    if (!std::exchange(valid_, false)) return;
    const auto held = weak_from_this().lock();
    const Block old = std::exchange(block_, {});
    if (added_) MainLoopTimers::shared().remove(*this);
}

void NSTimer::fire() {
    if (!valid_) return;
    const auto held = self();
    // A copy: the block may invalidate its own timer.
    const Block block = block_;
    try {
        if (block) block(*this);
    } catch (const std::exception& error) {
        NSLog(std::string("timer threw: ") + error.what());
    } catch (...) {
        NSLog("timer threw what is no exception");
    }
    if (!repeats_) invalidate();
}

void NSTimer::setMainRunLoopMode(NSRunLoopMode mode) { MainLoopTimers::shared().setMode(mode); }

NSRunLoopMode NSTimer::mainRunLoopMode() { return MainLoopTimers::shared().mode(); }

void NSTimer::invalidateAllForTesting() { MainLoopTimers::shared().removeAll(); }

}  // namespace zqcore::platform
