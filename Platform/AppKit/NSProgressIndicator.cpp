#include "Platform/AppKit/NSProgressIndicator.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/NSTimer.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGPath.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSGraphicsContext.h"

namespace zqcore::platform {

namespace {

constexpr int kSpokes = 12;
constexpr double kStep = 1.0 / kSpokes;
constexpr CGFloat kBarThickness = 6;

}  // namespace

NSProgressIndicator::~NSProgressIndicator() {
    if (timer_) timer_->invalidate();
}

void NSProgressIndicator::setStyle(NSProgressIndicatorStyle style) {
    style_ = style;
    invalidateIntrinsicContentSize();
    setNeedsDisplay(true);
}

void NSProgressIndicator::setControlSize(NSControlSize size) {
    size_ = size;
    invalidateIntrinsicContentSize();
    setNeedsDisplay(true);
}

void NSProgressIndicator::setDisplayedWhenStopped(bool displayed) {
    displayedWhenStopped_ = displayed;
    setNeedsDisplay(true);
}

void NSProgressIndicator::startAnimation(NSObject* /*sender*/) {
    animating_ = true;
    setNeedsDisplay(true);
    updateTimer();
}

void NSProgressIndicator::stopAnimation(NSObject* /*sender*/) {
    animating_ = false;
    setNeedsDisplay(true);
    updateTimer();
}

void NSProgressIndicator::viewDidMoveToWindow() {
    NSView::viewDidMoveToWindow();
    updateTimer();
}

void NSProgressIndicator::updateTimer() {
    const bool turns = animating_ && window() && !isHiddenOrHasHiddenAncestor();
    if (turns == (timer_ != nullptr)) return;
    if (!turns) return std::exchange(timer_, nullptr)->invalidate();
    const auto weak =
        std::weak_ptr<NSProgressIndicator>(std::static_pointer_cast<NSProgressIndicator>(shared_from_this()));
    timer_ = NSTimer::timerWithTimeInterval(kStep, true, [weak](NSTimer& timer) {
        const auto held = weak.lock();
        if (!held) return timer.invalidate();
        const auto shownIn = held->window();
        // In a window that isn't shown it stops; the drawing at its next showing starts it again.
        if (!shownIn || !shownIn->isVisible()) return std::exchange(held->timer_, nullptr)->invalidate();
        held->setNeedsDisplay(true);
    });
    timer_->addToMainRunLoop(NSRunLoopMode::commonModes);
}

CGSize NSProgressIndicator::intrinsicContentSize() const {
    const CGFloat side = size_ == NSControlSize::regular ? 32 : size_ == NSControlSize::small ? 16 : 10;
    if (style_ == NSProgressIndicatorStyle::spinning) return {side, side};
    return {NSViewNoIntrinsicMetric, side / 2};
}

void NSProgressIndicator::drawRect(const CGRect& /*dirtyRect*/) {
    const auto current = NSGraphicsContext::currentContext();
    updateTimer();
    if (!current || (!animating_ && !displayedWhenStopped_)) return;
    const double seconds = std::chrono::duration<double>(Clock::current().now().sinceStart).count();
    const int front = animating_ ? static_cast<int>(std::fmod(seconds, 1) * kSpokes) : 0;
    if (style_ == NSProgressIndicatorStyle::spinning) {
        drawSpokes(*current->cgContext(), front);
    } else {
        drawBar(*current->cgContext(), front);
    }
}

void NSProgressIndicator::drawSpokes(CGContext& context, int front) const {
    const CGRect area = bounds();
    const CGPoint centre{CGRectGetMidX(area), CGRectGetMidY(area)};
    const CGFloat radius = std::min(area.size.width, area.size.height) / 2;
    const double turn = isFlipped() ? 1 : -1;
    context.setLineWidth(radius / 5);
    context.setLineCap(CGLineCap::round);
    for (int spoke = 0; spoke < kSpokes; ++spoke) {
        // The spoke in front is darkest, those behind it fade.
        const int age = (front - spoke + kSpokes) % kSpokes;
        const double angle = std::numbers::pi / 2 + turn * 2 * std::numbers::pi * spoke / kSpokes;
        const auto at = [&](CGFloat distance) {
            return CGPoint{centre.x + std::cos(angle) * distance, centre.y + std::sin(angle) * distance};
        };
        const auto path = CGPath::make();
        path->moveTo(at(radius * 0.5));
        path->lineTo(at(radius * 0.9));
        context.setStrokeColor(
            NSColor::labelColor()->colorWithAlphaComponent(0.8 - 0.6 * age / (kSpokes - 1))->cgColor());
        context.stroke(*path);
    }
}

// A third of the bar goes from end to end in a turn.
void NSProgressIndicator::drawBar(CGContext& context, int step) const {
    const CGRect area = bounds();
    const CGFloat thickness = std::min(area.size.height, kBarThickness);
    const CGRect track =
        CGRectMake(area.origin.x, CGRectGetMidY(area) - thickness / 2, area.size.width, thickness);
    const auto shape = CGPath::roundedRect(track, thickness / 2, thickness / 2);
    context.setFillColor(NSColor::labelColor()->colorWithAlphaComponent(0.12)->cgColor());
    context.fill(*shape);
    if (!animating_) return;
    const CGFloat part = track.size.width / 3;
    const CGFloat start = (track.size.width + part) * (step + 0.5) / kSpokes - part;
    context.saveGState();
    context.clipTo(*shape);
    context.setFillColor(NSColor::controlAccentColor()->cgColor());
    context.fill(*CGPath::roundedRect(CGRectMake(track.origin.x + start, track.origin.y, part, thickness),
                                      thickness / 2, thickness / 2));
    context.restoreGState();
}

}  // namespace zqcore::platform
