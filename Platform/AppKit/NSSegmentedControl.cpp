#include "Platform/AppKit/NSSegmentedControl.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSEvent.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGPath.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSGraphicsContext.h"
#include "Platform/Graphics/TextLayout.h"

namespace zqcore::platform {

namespace {

constexpr CGFloat kPadding = 10;
constexpr CGFloat kHeight = 21;
constexpr CGFloat kCorner = 5;
constexpr int kMostSegments = 1000;

}  // namespace

void NSSegmentedControl::setSegmentCount(int count) {
    labels_.resize(static_cast<std::size_t>(std::clamp(count, 0, kMostSegments)));
    if (selected_ >= segmentCount()) selected_ = -1;
    invalidateIntrinsicContentSize();
    setNeedsDisplay(true);
}

std::string NSSegmentedControl::labelForSegment(int segment) const {
    return segment >= 0 && segment < segmentCount() ? labels_[static_cast<std::size_t>(segment)]
                                                    : std::string();
}

void NSSegmentedControl::setLabel(std::string label, int forSegment) {
    if (forSegment < 0 || forSegment >= segmentCount()) return;
    labels_[static_cast<std::size_t>(forSegment)] = std::move(label);
    invalidateIntrinsicContentSize();
    setNeedsDisplay(true);
}

void NSSegmentedControl::setSelectedSegment(int segment) {
    selected_ = segment >= 0 && segment < segmentCount() ? segment : -1;
    setNeedsDisplay(true);
}

int NSSegmentedControl::segmentAt(const NSEvent& event) const {
    const CGPoint point = convertPointFromView(event.locationInWindow(), nullptr);
    if (labels_.empty() || !CGRectContainsPoint(bounds(), point)) return -1;
    const CGFloat width = bounds().size.width / segmentCount();
    return std::min(static_cast<int>((point.x - bounds().origin.x) / width), segmentCount() - 1);
}

void NSSegmentedControl::mouseDown(const NSEvent& event) {
    if (!isEnabled()) return;
    pressed_ = segmentAt(event);
    NSApplication::shared()->beginTracking();
}

void NSSegmentedControl::mouseUp(const NSEvent& event) {
    const int pressed = std::exchange(pressed_, -1);
    NSApplication::shared()->endTracking();
    if (pressed < 0 || !isEnabled() || segmentAt(event) != pressed) return;
    const auto held = shared_from_this();
    setSelectedSegment(pressed);
    sendAction(action(), target());
}

CGSize NSSegmentedControl::intrinsicContentSize() const {
    CGFloat widest = 0;
    for (const auto& label : labels_)
        widest = std::max(widest, std::ceil(TextLayout(label, font()).size().width) + 2 * kPadding);
    return {widest * segmentCount(), kHeight};
}

void NSSegmentedControl::drawFocusRingMask() {
    if (const auto current = NSGraphicsContext::currentContext())
        current->cgContext()->fill(*CGPath::roundedRect(bounds(), kCorner, kCorner));
}

void NSSegmentedControl::drawRect(const CGRect& /*dirtyRect*/) {
    const auto current = NSGraphicsContext::currentContext();
    if (!current || labels_.empty()) return;
    CGContext& context = *current->cgContext();
    const CGRect area = bounds();
    const CGFloat width = area.size.width / segmentCount();
    const auto edge = CGPath::roundedRect(CGRectInset(area, 0.5, 0.5), kCorner, kCorner);
    context.setFillColor(NSColor::controlColor()->cgColor());
    context.fill(*edge);
    for (int segment = 0; segment < segmentCount(); ++segment) {
        const CGRect part{{area.origin.x + segment * width, area.origin.y}, {width, area.size.height}};
        const bool selected = segment == selected_;
        if (selected) {
            context.setFillColor(NSColor::controlAccentColor()->cgColor());
            context.fill(*CGPath::roundedRect(CGRectInset(part, 1, 1), 4, 4));
        }
        const TextLayout label(labels_[static_cast<std::size_t>(segment)], font());
        const CGSize size = label.size();
        label.draw(context,
                   {{CGRectGetMidX(part) - size.width / 2, CGRectGetMidY(part) - size.height / 2}, size},
                   selected ? NSColor::whiteColor() : nullptr);
    }
    context.setStrokeColor(NSColor::separatorColor()->cgColor());
    context.stroke(*edge);
}

}  // namespace zqcore::platform
