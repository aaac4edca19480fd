#include "Platform/AppKit/NSAnimationContext.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "Platform/AppKit/GuardedCall.h"
#include "Platform/AppKit/SteppedAnimation.h"
#include "Platform/Foundation/NSTimer.h"
#include "Platform/QuartzCore/CAMediaTimingFunction.h"
#include "Platform/QuartzCore/CATransaction.h"

namespace zqcore::platform {

namespace {

// The outermost stands for code outside of any group.
std::vector<std::unique_ptr<NSAnimationContext>>& contexts() {
    static auto& stack = *new std::vector<std::unique_ptr<NSAnimationContext>>;
    if (stack.empty()) stack.push_back(std::make_unique<NSAnimationContext>());
    return stack;
}

}  // namespace

NSAnimationContext& NSAnimationContext::current() { return *contexts().back(); }

void NSAnimationContext::beginGrouping() {
    auto inner = std::make_unique<NSAnimationContext>(current());
    inner->completion_ = {};
    contexts().push_back(std::move(inner));
}

void NSAnimationContext::endGrouping() {
    if (contexts().size() < 2) return;
    const auto group = std::move(contexts().back());
    contexts().pop_back();
    if (group->completion_)
        CATransaction::scheduleCompletion(group->duration_, std::move(group->completion_));
}

void NSAnimationContext::runAnimationGroup(const std::function<void(NSAnimationContext&)>& changes,
                                           std::function<void()> completion) {
    beginGrouping();
    const std::size_t depth = contexts().size();
    NSAnimationContext& context = current();
    context.completion_ = std::move(completion);
    if (changes) guardedCall("animation group", [&] { changes(context); });
    // Groups that the closure left open end with this one; it may also have ended this one itself.
    while (contexts().size() >= depth) endGrouping();
}

void NSAnimationContext::setDuration(double seconds) {
    duration_ = std::isfinite(seconds) ? std::max(0.0, seconds) : 0;
}

void NSAnimationContext::setTimingFunction(std::shared_ptr<CAMediaTimingFunction> function) {
    timing_ = std::move(function);
}

void NSAnimationContext::setAllowsImplicitAnimation(bool allows) { implicit_ = allows; }

struct SteppedAnimation::Run : std::enable_shared_from_this<SteppedAnimation::Run> {
    static constexpr double kFrame = 1.0 / 60;

    std::function<void(double)> apply;
    std::shared_ptr<CAMediaTimingFunction> timing;
    Clock::Instant start;
    double duration = 0;
    std::shared_ptr<NSTimer> timer;

    void wait() {
        const double left = duration - std::chrono::duration<double>(Clock::current().now() - start).count();
        timer = NSTimer::timerWithTimeInterval(std::min(left, kFrame), false,
                                               [self = weak_from_this()](NSTimer&) {
                                                   if (const auto held = self.lock()) held->step();
                                               });
        timer->addToMainRunLoop(NSRunLoopMode::commonModes);
    }
    void step() {
        const double passed = std::chrono::duration<double>(Clock::current().now() - start).count();
        // The last interval is cut to nanoseconds, so it may end one of them early.
        if (passed >= duration - 1e-7) return apply(1);
        wait();
        apply(timing->progressAt(passed / duration));
    }
};

SteppedAnimation::SteppedAnimation(std::shared_ptr<Run> run) : run_(std::move(run)) {}

SteppedAnimation::~SteppedAnimation() {
    if (run_->timer) run_->timer->invalidate();
}

std::shared_ptr<SteppedAnimation> SteppedAnimation::run(std::function<void(double)> apply) {
    const NSAnimationContext& context = NSAnimationContext::current();
    auto steps = std::make_shared<Run>();
    steps->apply = std::move(apply);
    steps->duration = context.duration();
    steps->timing = context.timingFunction()
                        ? context.timingFunction()
                        : CAMediaTimingFunction::functionWithName(kCAMediaTimingFunctionDefault);
    steps->start = Clock::current().now();
    if (steps->duration > 0) {
        steps->wait();
    } else {
        steps->apply(1);
    }
    return std::make_shared<SteppedAnimation>(std::move(steps));
}

}  // namespace zqcore::platform
