#include "Classes/Core/Extension/AppKit/NSViewExtension.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/NSImage.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/NSPDFImageRep.h"
#include "Platform/QuartzCore/CALayer.h"
#include "Platform/QuartzCore/LayerRenderer.h"

namespace zqcore {

std::shared_ptr<NSImage> zq_snapshot(NSView& view) {
    if (const auto window = view.window()) window->displayIfNeeded();
    view.layoutSubtreeIfNeeded();
    const CGSize size = view.bounds().size;
    auto image = NSImage::make(size);
    const auto page = NSPDFImageRep::make(size, [&](CGContext& context) {
        CALayer& layer = *view.layer();
        const CGPoint origin = layer.frame().origin;
        // The page is y-up; the layer is drawn in its superlayer's space, which may not be.
        if (layer.contentsAreFlipped() != layer.isGeometryFlipped()) {
            context.translateBy(0, size.height);
            context.scaleBy(1, -1);
        }
        context.translateBy(-origin.x, -origin.y);
        LayerRenderer::render(layer, context);
    });
    if (page) image->addRepresentation(page);
    return image;
}

}  // namespace zqcore
