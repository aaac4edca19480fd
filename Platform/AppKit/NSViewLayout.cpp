#include "Platform/AppKit/DisplayPass.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"

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

}  // namespace zqcore::platform
