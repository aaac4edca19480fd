#include "Classes/Core/Extension/AppKit/NSViewExtension.h"
#include "Platform/Foundation/NSImage.h"
#include "Platform/Graphics/NSPDFImageRep.h"

namespace zqcore {

std::shared_ptr<NSImage> zq_snapshot(NSView& view) {
    auto image = NSImage::make(view.bounds().size);
    if (const auto page = view.PDFImageRepInsideRect(view.bounds())) image->addRepresentation(page);
    return image;
}

}  // namespace zqcore
