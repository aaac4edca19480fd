#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"

namespace zqcore::platform {

const std::shared_ptr<CALayer>& NSView::layer() const { return layer_; }
void NSView::setLayer(std::shared_ptr<CALayer> layer) { layer_ = std::move(layer); }
std::shared_ptr<CALayer> NSView::makeBackingLayer() { return nullptr; }
void NSView::setWantsLayer(bool wants) { wantsLayer_ = wants; }
void NSView::setAlphaValue(CGFloat alpha) { alpha_ = alpha; }
void NSView::applyLayerGeometry() {}
void NSView::applyLayerState() {}
void NSView::reorderLayers() {}
void NSView::linked(NSView& /*view*/) {}
void NSView::unlinking(NSView& /*view*/) {}
void NSWindow::rootLayerEntered(NSView& /*content*/) {}
void NSWindow::rootLayerLeft(NSView& /*content*/) {}

// LayoutItem's until it is there.
void NSView::frameDidChangeOutsideLayout() {}
void NSView::setTranslatesAutoresizingMaskIntoConstraints(bool t) { translatesMask_ = t; }
void NSView::invalidateIntrinsicContentSize() {}
float NSView::contentHuggingPriority(NSLayoutConstraintOrientation o) const {
    return hugging_[static_cast<int>(o)];
}
void NSView::setContentHuggingPriority(float p, NSLayoutConstraintOrientation o) {
    hugging_[static_cast<int>(o)] = p;
}
float NSView::contentCompressionResistancePriority(NSLayoutConstraintOrientation o) const {
    return compression_[static_cast<int>(o)];
}
void NSView::setContentCompressionResistancePriority(float p, NSLayoutConstraintOrientation o) {
    compression_[static_cast<int>(o)] = p;
}
CGSize NSView::fittingSize() { return {}; }

}  // namespace zqcore::platform
