#include "Platform/AppKit/NSTrackingArea.h"

#include <algorithm>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/PointerTracking.h"
#include "Platform/Graphics/CGRect.h"

namespace zqcore::platform {

NSTrackingArea::NSTrackingArea(CGRect rect, NSTrackingAreaOptions options,
                               const std::shared_ptr<NSResponder>& owner)
    : rect_(rect), options_(options), owner_(owner) {}

PointerTracking& PointerTracking::shared() {
    // Never ended: views may still go while the process does.
    static PointerTracking& tracking = *new PointerTracking;
    return tracking;
}

void PointerTracking::add(NSView& view, const std::shared_ptr<NSTrackingArea>& area) {
    area->inside_ = area->has(NSTrackingAssumeInside);
    if (!area->inside_ && view.window()) {
        const auto display = Display::current();
        const CGPoint location = display->pointerLocation();
        area->inside_ = isInside(view, *area, location, display->windowAt(location));
    }
    if (!knows(*area))
        entries_.push_back({std::static_pointer_cast<NSView>(view.weak_from_this().lock()), area});
}

void PointerTracking::remove(const NSTrackingArea& area) {
    std::erase_if(entries_, [&](const Entry& entry) { return entry.area.get() == &area; });
}

bool PointerTracking::knows(const NSTrackingArea& area) const {
    return std::ranges::any_of(entries_, [&](const Entry& entry) { return entry.area.get() == &area; });
}

bool PointerTracking::isInside(const NSView& view, const NSTrackingArea& area, CGPoint location,
                               DisplayWindowNumber under) {
    const auto window = view.window();
    if (!window || !window->isVisible() || window->windowNumber() != under ||
        view.isHiddenOrHasHiddenAncestor())
        return false;
    const CGPoint point = view.convertPointFromView(window->convertPointFromScreen(location), nullptr);
    return view.mouseInRect(point, area.has(NSTrackingInVisibleRect) ? view.visibleRect() : area.rect());
}

bool PointerTracking::isActive(const NSView& view, const NSTrackingArea& area) {
    const auto window = view.window();
    if (!window) return false;
    if (area.has(NSTrackingActiveAlways)) return true;
    const auto& application = NSApplication::shared();
    if (area.has(NSTrackingActiveInActiveApp)) return application->isActive();
    if (area.has(NSTrackingActiveInKeyWindow)) return window->isKeyWindow();
    if (area.has(NSTrackingActiveWhenFirstResponder)) return window->firstResponder().get() == &view;
    return false;
}

std::vector<PointerTracking::Notice> PointerTracking::pointerIsAt(CGPoint location, DisplayWindowNumber under,
                                                                  Motion motion) {
    std::vector<Notice> exits;
    std::vector<Notice> entries;
    std::vector<Notice> moves;
    for (const Entry& entry : entries_) {
        const auto view = entry.view.lock();
        NSTrackingArea& area = *entry.area;
        if (!view || (motion == Motion::drag && !area.has(NSTrackingEnabledDuringMouseDrag))) continue;
        const bool inside = isInside(*view, area, location, under);
        if (motion == Motion::release && inside) continue;
        const bool changed = inside != area.inside_;
        if (changed && inside && !isActive(*view, area)) continue;
        area.inside_ = inside;
        const auto window = view->window();
        if (!window || !isActive(*view, area)) continue;
        if (changed && area.has(NSTrackingMouseEnteredAndExited)) {
            (inside ? entries : exits)
                .push_back({inside ? NSEventType::mouseEntered : NSEventType::mouseExited, view, window,
                            entry.area});
        }
        if (inside && motion == Motion::plain && area.has(NSTrackingMouseMoved))
            moves.push_back({NSEventType::mouseMoved, view, window, entry.area});
    }
    exits.insert(exits.end(), entries.begin(), entries.end());
    exits.insert(exits.end(), moves.begin(), moves.end());
    return exits;
}

}  // namespace zqcore::platform
