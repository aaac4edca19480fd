#include "Platform/AppKit/DisplayPass.h"

#include <utility>
#include <vector>

#include "Platform/AppKit/GuardedCall.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"

namespace zqcore::platform {

// Inner views first, as their own sizes decide about the outer ones.
void DisplayPass::updateConstraints(NSView& view) {
    for (const auto& subview : std::vector(view.subviews())) updateConstraints(*subview);
    if (std::exchange(view.needsUpdateConstraints_, false))
        guardedCall("updateConstraints", [&] { view.updateConstraints(); });
}

void DisplayPass::layoutMarked(NSView& view) {
    if (std::exchange(view.needsLayout_, false)) guardedCall("layout", [&] { view.layout(); });
    for (const auto& subview : std::vector(view.subviews())) layoutMarked(*subview);
}

void DisplayPass::layout(NSView& root) {
    const auto held = root.shared_from_this();
    updateConstraints(root);
    layoutMarked(root);
}

void DisplayPass::updateTracking(NSView& view) {
    if (std::exchange(view.needsTracking_, false))
        guardedCall("updateTrackingAreas", [&] { view.updateTrackingAreas(); });
    for (const auto& subview : std::vector(view.subviews())) updateTracking(*subview);
}

bool DisplayPass::drawMarked(NSView& view) {
    bool drew = false;
    if (!view.isHidden() && std::exchange(view.needsDisplay_, false)) {
        drew = true;
        if (view.wantsUpdateLayer()) guardedCall("updateLayer", [&] { view.updateLayer(); });
    }
    for (const auto& subview : std::vector(view.subviews())) drew = drawMarked(*subview) || drew;
    return drew;
}

void DisplayPass::run(NSWindow& window) {
    const auto held = window.self();
    window.needsPass_ = false;
    const auto content = window.contentView();
    if (content) {
        layout(*content);
        updateTracking(*content);
        if (drawMarked(*content)) window.needsPixels_ = true;
    }
    if (window.isVisible() && std::exchange(window.needsPixels_, false)) present(window);
}

void DisplayPass::present(NSWindow& /*window*/) {}

}  // namespace zqcore::platform
