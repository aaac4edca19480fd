#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/NSPDFImageRep.h"
#include "Platform/QuartzCore/CALayer.h"
#include "Platform/QuartzCore/LayerRenderer.h"

namespace zqcore::platform {

std::shared_ptr<NSPDFImageRep> NSView::PDFImageRepInsideRect(const CGRect& rect) {
    const CGRect part = CGRectStandardize(rect);
    if (const auto window = window_.lock()) window->displayIfNeeded();
    layoutSubtreeIfNeeded();
    return NSPDFImageRep::make(part.size, [&](CGContext& context) {
        const CGRect whole = bounds();
        // From the page's lower edge up to the view's.
        const CGFloat below = isFlipped() ? CGRectGetMaxY(whole) - CGRectGetMaxY(part)
                                          : CGRectGetMinY(part) - CGRectGetMinY(whole);
        context.translateBy(whole.origin.x - part.origin.x, -below);
        // The page is y-up; the layer is drawn in its superlayer's space, which may not be.
        if (layer_->contentsAreFlipped() != layer_->isGeometryFlipped()) {
            context.translateBy(0, whole.size.height);
            context.scaleBy(1, -1);
        }
        const CGPoint origin = layer_->frame().origin;
        context.translateBy(-origin.x, -origin.y);
        LayerRenderer::render(*layer_, context);
    });
}

Data NSView::dataWithPDFInsideRect(const CGRect& rect) {
    const auto page = PDFImageRepInsideRect(rect);
    return page ? page->PDFRepresentation() : Data{};
}

}  // namespace zqcore::platform
