#include <algorithm>
#include <ranges>
#include <typeinfo>
#include <utility>

#include "Platform/AppKit/GuardedCall.h"
#include "Platform/AppKit/NSAnimationContext.h"
#include "Platform/AppKit/NSStackView.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Graphics/NSGraphicsContext.h"
#include "Platform/Graphics/NSShadow.h"
#include "Platform/QuartzCore/CALayer.h"
#include "Platform/QuartzCore/CATransaction.h"

namespace zqcore::platform {

namespace {

// A backing layer changes silently, unless the group that is open lets it animate.
std::optional<CAAnimationTerms> termsOfBackingLayer(const CALayer& /*layer*/) {
    const NSAnimationContext& context = NSAnimationContext::current();
    if (!context.allowsImplicitAnimation() || context.duration() <= 0) return std::nullopt;
    return CAAnimationTerms{context.duration(), context.timingFunction()};
}

// These draw nothing themselves, while a class that derives from them may.
bool mayDraw(const NSView& view) {
    return typeid(view) != typeid(NSView) && typeid(view) != typeid(NSStackView);
}

}  // namespace

void NSView::setup() {
    NSResponder::setup();
    layer_ = makeBackingLayer();
    if (!layer_) layer_ = makeObject<CALayer>();
    prepareLayer();
}

std::shared_ptr<CALayer> NSView::makeBackingLayer() { return makeObject<CALayer>(); }

void NSView::prepareLayer() {
    layer_->setActionPolicy(termsOfBackingLayer);
    if (mayDraw(*this)) {
        layer_->setDrawHandler([weak = std::weak_ptr<NSView>(self())](CGContext& context) {
            const auto view = weak.lock();
            if (!view || view->wantsUpdateLayer()) return;
            // Borrowed for the call: the handler's context is the layer's.
            const GraphicsContextScope scope(std::shared_ptr<CGContext>(std::shared_ptr<void>(), &context));
            guardedCall("drawRect", [&] { view->drawRect(view->bounds()); });
        });
    }
    if (clipsToBounds()) layer_->setMasksToBounds(true);
    layer_->setOpacity(alpha_);
    applyLayerState();
    applyLayerGeometry();
}

void NSView::setLayer(std::shared_ptr<CALayer> layer) {
    if (!layer || layer == layer_) return;
    const auto old = std::exchange(layer_, std::move(layer));
    prepareLayer();
    const auto window = window_.lock();
    const bool isRoot = window && window->contentView().get() == this;
    if (isRoot) old->setTreeChangeHandler({});
    if (const auto above = superview_.lock()) {
        old->removeFromSuperlayer();
        above->attachLayer(*this);
    }
    for (const auto& subview : subviews_) attachLayer(*subview);
    if (isRoot) window->rootLayerEntered(*this);
    setNeedsDisplay(true);
}

void NSView::setWantsLayer(bool wants) { wantsLayer_ = wants; }

CGFloat NSView::alphaValue() const noexcept { return layer_ ? layer_->opacity() : alpha_; }

void NSView::setAlphaValue(CGFloat alpha) {
    alpha_ = std::clamp(alpha, 0.0, 1.0);
    if (layer_) layer_->setOpacity(alpha_);
}

void NSView::setShadow(std::shared_ptr<NSShadow> shadow) {
    shadow_ = std::move(shadow);
    const CGShadow cast = shadow_ ? shadow_->cgShadow() : CGShadow{};
    layer_->setShadowOpacity(shadow_ ? 1 : 0);
    if (!shadow_) return;
    layer_->setShadowColor(cast.color);
    layer_->setShadowOffset(cast.offset);
    layer_->setShadowRadius(cast.blur);
}

const std::vector<std::shared_ptr<CIFilter>>& NSView::contentFilters() const { return layer_->filters(); }

void NSView::setContentFilters(std::vector<std::shared_ptr<CIFilter>> filters) {
    layer_->setFilters(std::move(filters));
}

// The backing layer's anchor is put back at every placing; a class that answers another one keeps its own.
void NSView::applyLayerGeometry() {
    if (!layer_) return;
    const auto above = superview_.lock();
    layer_->setGeometryFlipped(isFlipped() != (above && above->isFlipped()));
    layer_->setAnchorPoint({0, 0});
    const CGPoint anchor = layer_->anchorPoint();
    layer_->setBounds(bounds());
    layer_->setPosition(
        {frame_.origin.x + anchor.x * frame_.size.width, frame_.origin.y + anchor.y * frame_.size.height});
}

void NSView::flipDidChange() {
    applyLayerGeometry();
    for (const auto& subview : subviews_) subview->applyLayerGeometry();
    markSubtreeTracking();
    setNeedsDisplay(true);
}

// The opacity isn't touched: it may have been set on the layer itself.
void NSView::applyLayerState() {
    if (layer_) layer_->setHidden(hidden_);
}

// Subviews' layers lie in the order of the subviews, in front of the layer's own sublayers.
void NSView::attachLayer(const NSView& subview) {
    if (!layer_ || !subview.layer_) return;
    const auto place =
        std::ranges::find_if(subviews_, [&](const auto& one) { return one.get() == &subview; });
    const auto& layers = layer_->sublayers();
    std::size_t index = layers.size();
    for (auto next = place; next != subviews_.end(); ++next) {
        const auto found = std::ranges::find(layers, (*next)->layer_);
        if (found == layers.end()) continue;
        index = static_cast<std::size_t>(found - layers.begin());
        break;
    }
    layer_->insertSublayer(subview.layer_, index);
}

void NSView::reorderLayers() {
    auto order = layer_->sublayers();
    auto next = subviews_.begin();
    for (auto& layer : order) {
        const bool backsSubview =
            std::ranges::any_of(subviews_, [&](const auto& subview) { return subview->layer_ == layer; });
        if (backsSubview) layer = (*next++)->layer_;
    }
    layer_->reorderSublayers(order);
}

void NSView::linked(NSView& view) {
    attachLayer(view);
    view.applyLayerGeometry();
    view.didJoinSuperitem();
}

void NSView::unlinking(NSView& view) {
    view.willLeaveSuperitem();
    if (view.layer_) view.layer_->removeFromSuperlayer();
}

void NSWindow::rootLayerEntered(NSView& content) {
    content.applyLayerGeometry();
    const auto weak = std::weak_ptr<NSWindow>(self());
    content.layer()->setTreeChangeHandler([weak] {
        const auto window = weak.lock();
        if (!window) return;
        window->layersChanged_ = true;
        if (!window->inPass_) window->markForDisplay();
    });
    needsPixels_ = true;
}

void NSWindow::rootLayerLeft(NSView& content) { content.layer()->setTreeChangeHandler({}); }

}  // namespace zqcore::platform
