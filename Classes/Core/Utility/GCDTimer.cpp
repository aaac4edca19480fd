#include "Classes/Core/Utility/GCDTimer.h"

#include <utility>

#include "Classes/Core/Utility/DispatchTimeLiterals.h"

namespace zqcore {

std::shared_ptr<GCDTimer> GCDTimer::make(double timeInterval, bool repeats,
                                         const std::shared_ptr<DispatchQueue>& queue, Handler handler) {
    return std::make_shared<GCDTimer>(Private{}, timeInterval, repeats, queue, std::move(handler));
}

GCDTimer::GCDTimer(Private, double interval, bool repeating, const std::shared_ptr<DispatchQueue>& target,
                   Handler call)
    : timeInterval(interval),
      repeats(repeating),
      queue(target ? target : DispatchQueue::global()),
      handler(std::move(call)) {}

GCDTimer::~GCDTimer() { invalidate(); }

void GCDTimer::fire() {
    const std::lock_guard lock(lock_);
    if (hadResume_ || hadInvalidate_) return;
    hadResume_ = true;
    timer_ = DispatchSourceTimer::make(queue);
    const Clock::Duration interval = durationFromSeconds(timeInterval);
    timer_->schedule(DispatchTime::wallNow(interval), interval);
    timer_->setEventHandler([weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->firing();
    });
    timer_->resume();
}

void GCDTimer::firing() {
    if (!hadInvalidate_ && handler) handler(*this);
    if (!repeats) invalidate();
}

void GCDTimer::invalidate() {
    const std::lock_guard lock(lock_);
    if (hadInvalidate_.exchange(true)) return;
    if (const auto timer = std::exchange(timer_, nullptr)) timer->cancel();
}

}  // namespace zqcore
