#include "Platform/AppKit/NSImageView.h"

#include <utility>

#include "Platform/AppKit/ImagePlacement.h"
#include "Platform/Foundation/NSImage.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSGraphicsContext.h"

namespace zqcore::platform {

void NSImageView::setImage(std::shared_ptr<NSImage> image) {
    image_ = std::move(image);
    invalidateIntrinsicContentSize();
    setNeedsDisplay(true);
}

void NSImageView::setImageScaling(NSImageScaling scaling) {
    scaling_ = scaling;
    setNeedsDisplay(true);
}

void NSImageView::setContentTintColor(std::shared_ptr<NSColor> color) {
    tint_ = std::move(color);
    setNeedsDisplay(true);
}

CGSize NSImageView::intrinsicContentSize() const {
    return image_ ? image_->size() : CGSize{NSViewNoIntrinsicMetric, NSViewNoIntrinsicMetric};
}

void NSImageView::drawRect(const CGRect& /*dirtyRect*/) {
    const auto current = NSGraphicsContext::currentContext();
    if (current && image_)
        image_->drawTinted(*current->cgContext(), placedImage(bounds(), image_->size(), scaling_), tint_);
}

}  // namespace zqcore::platform
