#include "Classes/Core/Extension/AppKit/NSViewExtension.h"
#include "Platform/Foundation/NSImage.h"
#include "Platform/Graphics/NSPDFImageRep.h"

namespace zqcore {

std::shared_ptr<NSImage> zq_snapshot(NSView& view) {
    const auto page = view.PDFImageRepInsideRect(view.bounds());
    auto image = NSImage::make(page ? view.bounds().size : CGSize{});
    image->addRepresentation(page);
    return image;
}

}  // namespace zqcore
