#include "Platform/AppKit/NSVisualEffectView.h"

#include <utility>

#include "Platform/Foundation/NSImage.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/NSAppearance.h"
#include "Platform/Graphics/NSGraphicsContext.h"

namespace zqcore::platform {

void NSVisualEffectView::setMaterial(NSVisualEffectMaterial material) {
    material_ = material;
    setNeedsDisplay(true);
}

void NSVisualEffectView::setState(NSVisualEffectState state) {
    state_ = state;
    setNeedsDisplay(true);
}

void NSVisualEffectView::setMaskImage(std::shared_ptr<NSImage> image) {
    mask_ = std::move(image);
    setNeedsDisplay(true);
}

void NSVisualEffectView::drawRect(const CGRect& /*dirtyRect*/) {
    const auto current = NSGraphicsContext::currentContext();
    if (!current) return;
    CGContext& context = *current->cgContext();
    const bool dark = NSAppearance::currentDrawingAppearance()->isDark();
    context.setFillColor(dark ? CGColor::white(0.16, 0.85) : CGColor::white(0.93, 0.85));
    if (!mask_) return context.fill(bounds());
    // Source-in keeps the colour where the mask is, as far as it is there.
    context.beginTransparencyLayer();
    mask_->draw(context, bounds());
    context.setBlendMode(CGBlendMode::sourceIn);
    context.fill(bounds());
    context.endTransparencyLayer();
}

}  // namespace zqcore::platform
