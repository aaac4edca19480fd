#include "Platform/AppKit/DisplayPass.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Layout/LayoutEngine.h"

namespace zqcore::platform {

void NSView::setNeedsDisplay(bool needs) {
    needsDisplay_ = needs;
    if (!needs) return;
    if (const auto window = window_.lock()) window->markForDisplay();
}

void NSView::setNeedsLayout(bool needs) {
    needsLayout_ = needs;
    if (!needs) return;
    if (const auto window = window_.lock()) window->markForDisplay();
}

void NSView::setNeedsUpdateConstraints(bool needs) {
    needsUpdateConstraints_ = needs;
    if (!needs) return;
    if (const auto window = window_.lock()) window->markForDisplay();
}

void NSView::layoutSubtreeIfNeeded() { DisplayPass::layout(*this); }

CGSize NSView::fittingSize() {
    DisplayPass::updateConstraints(*this);
    return LayoutEngine::fittingSize(*this);
}

LayoutItem* NSView::layoutSuperitem() const { return superview_.lock().get(); }

void NSView::forEachLayoutSubitem(const std::function<void(LayoutItem&)>& body) const {
    for (const auto& subview : subviews_) body(*subview);
}

// Layout counts y downwards from the superview's upper edge; its bounds origin plays no part.
CGRect NSView::layoutFrame() const {
    const auto above = superview_.lock();
    if (!above || above->isFlipped()) return frame_;
    return {{frame_.origin.x, above->frame_.size.height - frame_.origin.y - frame_.size.height}, frame_.size};
}

void NSView::setLayoutFrame(const CGRect& frame) {
    CGRect placed = frame;
    const auto above = superview_.lock();
    if (!above) {
        placed.origin = frame_.origin;
    } else if (!above->isFlipped()) {
        placed.origin.y = above->frame_.size.height - frame.origin.y - frame.size.height;
    }
    settingLayoutFrame_ = true;
    setFrame(placed);
    settingLayoutFrame_ = false;
}

std::string NSView::layoutDescription() const { return description(); }

void NSView::layoutDidBecomeStale() {
    if (const auto window = window_.lock()) window->markForDisplay();
}

}  // namespace zqcore::platform
