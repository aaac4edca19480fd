#include "Platform/Graphics/NSPDFImageRep.h"

#include <cairo-pdf.h>

#include <cmath>
#include <string>

#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/Linux/CairoHandles.h"

namespace zqcore::platform {

namespace {

cairo_status_t append(void* to, const unsigned char* bytes, unsigned count) {
    static_cast<std::string*>(to)->append(reinterpret_cast<const char*>(bytes), count);
    return CAIRO_STATUS_SUCCESS;
}

/// The longest side that a page of PDF 1.x may have.
constexpr CGFloat kLargestPage = 14400;

}  // namespace

std::shared_ptr<NSPDFImageRep> NSPDFImageRep::make(CGSize size, const DrawFunction& draw) {
    if (!(size.width > 0 && size.height > 0 && size.width <= kLargestPage && size.height <= kLargestPage)) {
        return nullptr;
    }
    const cairo_rectangle_t extents{0, 0, size.width, size.height};
    std::shared_ptr<cairo_surface_t> recording(
        cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, &extents), cairo_surface_destroy);
    const auto context = CGContext::adopt(cairo_create(recording.get()), size.height);
    context->clipTo({{}, size});
    if (draw) draw(*context);
    return makeObject<NSPDFImageRep>(size, std::move(recording));
}

Data NSPDFImageRep::PDFRepresentation() const {
    std::string bytes;
    {
        const CairoSurface file(
            cairo_pdf_surface_create_for_stream(append, &bytes, page_.width, page_.height));
        // No date of making in it: the same drawing gives the same bytes.
        cairo_pdf_surface_set_metadata(file.get(), CAIRO_PDF_METADATA_CREATE_DATE, "1970-01-01T00:00:00Z");
        const CairoContext page(cairo_create(file.get()));
        cairo_set_source_surface(page.get(), recording_.get(), 0, 0);
        cairo_paint(page.get());
        cairo_show_page(page.get());
        cairo_surface_finish(file.get());
    }
    return Data(std::move(bytes));
}

void NSPDFImageRep::draw(CGContext& context, const CGRect& rect) const {
    if (context.drawsNothing() || !(rect.size.width > 0 && rect.size.height > 0)) return;
    context.saveGState();
    context.translateBy(rect.origin.x, rect.origin.y);
    context.scaleBy(rect.size.width / page_.width, rect.size.height / page_.height);
    // The recording's own y runs downwards.
    if (!context.isFlipped()) context.flip(page_.height);
    if (!context.drawsNothing()) {
        cairo_set_source_surface(context.native(), recording_.get(), 0, 0);
        cairo_paint_with_alpha(context.native(), context.alpha());
    }
    context.restoreGState();
}

}  // namespace zqcore::platform
