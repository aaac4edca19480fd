#include "Classes/Core/Extension/AppKit/NSViewExtension.h"

#include "Platform/AppKit/NSWindow.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/QuartzCore/CALayer.h"

namespace zqcore {

namespace {

/// Moves `target` to the end of the siblings if `toTheEnd`, else to the beginning.
void moveSubview(NSView& view, const std::shared_ptr<NSView>& target, bool toTheEnd) {
    const auto after = toTheEnd ? NSOrderedDescending : NSOrderedAscending;
    const auto before = toTheEnd ? NSOrderedAscending : NSOrderedDescending;
    view.sortSubviewsUsingFunction([&](const NSView& a, const NSView& b) {
        if (&a == target.get()) return after;
        if (&b == target.get()) return before;
        return NSOrderedSame;
    });
}

}  // namespace

void zq_convenienceAddTrackingArea(NSView& view, NSTrackingAreaOptions options) {
    // A copy: the list changes under the loop.
    for (const auto areas = view.trackingAreas(); const auto& area : areas) view.removeTrackingArea(area);
    view.addTrackingArea(makeObject<NSTrackingArea>(
        view.bounds(), options, std::static_pointer_cast<NSResponder>(view.shared_from_this())));
}

void removeAllSubviews(NSView& view) {
    for (const auto subviews = view.subviews(); const auto& subview : subviews)
        subview->removeFromSuperview();
}

std::shared_ptr<NSColor> backgroundColor(const NSView& view) {
    if (!view.wantsLayer() || !view.layer()->hasBackgroundColor()) return nullptr;
    return NSColor::colorWithCGColor(view.layer()->backgroundColor());
}

void setBackgroundColor(NSView& view, const std::shared_ptr<NSColor>& color) {
    view.setWantsLayer(true);
    view.layer()->setBackgroundColor(color ? std::optional(color->cgColor()) : std::nullopt);
}

void bringSubviewToFront(NSView& view, const std::shared_ptr<NSView>& subview) {
    moveSubview(view, subview, true);
}

void sendSubviewToBack(NSView& view, const std::shared_ptr<NSView>& subview) {
    moveSubview(view, subview, false);
}

std::optional<CGRect> zq_frameInWindow(const NSView& view) {
    if (!view.window()) return std::nullopt;
    return view.convertRectToView(view.bounds(), nullptr);
}

std::optional<CGRect> zq_frameInScreen(const NSView& view) {
    const auto window = view.window();
    if (!window) return std::nullopt;
    return window->convertRectToScreen(view.convertRectToView(view.bounds(), nullptr));
}

}  // namespace zqcore
