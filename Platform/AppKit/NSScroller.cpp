#include "Platform/AppKit/NSScroller.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Platform/AppKit/NSAnimationContext.h"
#include "Platform/Foundation/NSTimer.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGPath.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSGraphicsContext.h"

namespace zqcore::platform {

namespace {

constexpr double kShown = 0.8;
constexpr double kFade = 0.25;
constexpr CGFloat kMargin = 2;
constexpr CGFloat kShortestKnob = 20;
constexpr CGFloat kKnobAlpha = 0.45;

}  // namespace

NSScroller::~NSScroller() {
    if (timer_) timer_->invalidate();
}

void NSScroller::setup() {
    NSView::setup();
    setAlphaValue(0);
}

void NSScroller::setValueAndProportion(double value, double proportion) {
    value = std::isfinite(value) ? std::clamp(value, 0.0, 1.0) : 0;
    if (!std::isfinite(proportion)) proportion = 1;
    if (value == value_ && proportion == proportion_) return;
    value_ = value;
    proportion_ = proportion;
    setNeedsDisplay(true);
}

CGRect NSScroller::knobRect() const {
    const CGRect track = CGRectInset(bounds(), kMargin, kMargin);
    if (proportion_ >= 1 || CGRectIsEmpty(track)) return CGRectNull();
    const bool vertical = direction_ == Direction::vertical;
    const CGFloat room = vertical ? track.size.height : track.size.width;
    const CGFloat length = std::min(room, std::max(kShortestKnob, room * std::max(0.0, proportion_)));
    const CGFloat start = (room - length) * value_;
    return vertical ? CGRectMake(track.origin.x, track.origin.y + start, track.size.width, length)
                    : CGRectMake(track.origin.x + start, track.origin.y, length, track.size.height);
}

void NSScroller::flash() {
    if (CGRectIsNull(knobRect())) return;
    setAlphaValue(1);
    if (timer_) timer_->invalidate();
    const auto weak = std::weak_ptr<NSScroller>(std::static_pointer_cast<NSScroller>(shared_from_this()));
    timer_ = NSTimer::timerWithTimeInterval(kShown, false, [weak](NSTimer&) {
        if (const auto held = weak.lock()) held->fade();
    });
    timer_->addToMainRunLoop(NSRunLoopMode::commonModes);
}

void NSScroller::fade() {
    timer_.reset();
    NSAnimationContext::runAnimationGroup([this](NSAnimationContext& context) {
        context.setDuration(kFade);
        context.setAllowsImplicitAnimation(true);
        setAlphaValue(0);
    });
}

void NSScroller::drawRect(const CGRect& /*dirtyRect*/) {
    const auto current = NSGraphicsContext::currentContext();
    const CGRect knob = knobRect();
    if (!current || CGRectIsNull(knob)) return;
    const CGFloat radius = std::min(knob.size.width, knob.size.height) / 2;
    CGContext& context = *current->cgContext();
    context.setFillColor(NSColor::labelColor()->colorWithAlphaComponent(kKnobAlpha)->cgColor());
    context.fill(*CGPath::roundedRect(knob, radius, radius));
}

}  // namespace zqcore::platform
