#include "Platform/Dispatch/DispatchSourceTimer.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <utility>

#include "Platform/Dispatch/Linux/DeadlineScheduler.h"

namespace zqcore::platform {

namespace {

using Duration = Clock::Duration;

// On a clock that is stepped by hand a shorter period would stop the stepping; its firings come as one call.
constexpr Duration kShortestSteppedPeriod = std::chrono::microseconds(100);

Duration nowOn(DispatchTime::Base base) {
    return base == DispatchTime::Base::monotonic ? DispatchTime::now().at : DispatchTime::wallNow().at;
}

class TimerSource final : public DispatchSourceTimer,
                          public Deadline,
                          public std::enable_shared_from_this<TimerSource> {
  public:
    explicit TimerSource(const std::shared_ptr<DispatchQueue>& queue)
        : queue_(queue ? queue : DispatchQueue::global()) {}
    ~TimerSource() override { DeadlineScheduler::shared().remove(*this); }

    void schedule(DispatchTime start, Duration interval) override {
        const std::lock_guard lock(mutex_);
        // Without a meaning on the platform: due at once, and never again.
        if (interval < Duration::zero()) {
            start.at = nowOn(start.base);
            interval = Duration::max();
        }
        // Before the beginning of its scale every moment is equally past, and the grid could not be counted.
        start.at = std::max(start.at, Duration::zero());
        next_ = start;
        interval_ = std::max(interval, Duration(1));
    }

    void setEventHandler(std::function<void()> handler) override {
        auto shared = std::make_shared<const std::function<void()>>(std::move(handler));
        const std::lock_guard lock(mutex_);
        // The earlier one ends with `shared`, after the lock.
        handler_.swap(shared);
    }

    void resume() override {
        const std::lock_guard lock(mutex_);
        if (std::exchange(resumed_, true) || cancelled_) return;
        DeadlineScheduler::shared().add(*this, next_);
    }

    void cancel() override {
        std::shared_ptr<const std::function<void()>> ended;
        const std::lock_guard lock(mutex_);
        cancelled_ = true;
        DeadlineScheduler::shared().remove(*this);
        ended = std::move(handler_);
    }

    Submission comeDue() noexcept override { return {queue_, firing()}; }

  private:
    [[nodiscard]] DispatchBlock firing() {
        return [weak = weak_from_this()] {
            if (const auto self = weak.lock()) self->fire();
        };
    }

    // On the queue. The source is due again only from here on, so firings that were missed come as one.
    void fire() {
        std::shared_ptr<const std::function<void()>> handler;
        {
            const std::lock_guard lock(mutex_);
            if (cancelled_) return;
            // A global queue runs blocks side by side, but a handler never beside itself.
            missed_ = running_;
            if (running_) return;
            running_ = true;
            handler = handler_;
            if (interval_ != Duration::max()) {
                next_.at = following();
                DeadlineScheduler::shared().add(*this, next_);
            }
        }
        if (handler && *handler) (*handler)();
        const std::lock_guard lock(mutex_);
        running_ = false;
        if (missed_ && !cancelled_) queue_->async(firing());
    }

    // The first of start + N intervals that lies ahead.
    [[nodiscard]] Duration following() const {
        Duration now = nowOn(next_.base);
        if (interval_ < kShortestSteppedPeriod && &Clock::current() != &Clock::system())
            now = DispatchTime::sum(now, kShortestSteppedPeriod - Duration(1));
        // A clock set back leaves the deadline where it is.
        const auto periods = now < next_.at ? 1 : (now - next_.at) / interval_ + 1;
        return DispatchTime::sum(next_.at, periods * interval_);
    }

    const std::shared_ptr<DispatchQueue> queue_;
    std::mutex mutex_;
    std::shared_ptr<const std::function<void()>> handler_;
    DispatchTime next_{DispatchTime::Base::monotonic, Duration::max()};
    Duration interval_ = Duration::max();
    bool resumed_ = false;
    bool cancelled_ = false;
    bool running_ = false;  // its handler
    bool missed_ = false;   // a firing that came meanwhile
};

}  // namespace

std::shared_ptr<DispatchSourceTimer> DispatchSourceTimer::make(const std::shared_ptr<DispatchQueue>& queue) {
    return std::make_shared<TimerSource>(queue);
}

}  // namespace zqcore::platform
