#include "Platform/QuartzCore/LayerRecording.h"

#include <cairo.h>

#include <cmath>

#include "Platform/Graphics/CGContext.h"

namespace zqcore::platform {

LayerRecording::LayerRecording(const CGRect& bounds, bool flipped, CGFloat scale,
                               const std::function<void(CGContext&)>& draw)
    : size_{bounds.size.width * scale, bounds.size.height * scale} {
    const bool hasArea = size_.width > 0 && size_.height > 0 && std::isfinite(size_.width * size_.height);
    if (!hasArea) return;
    const cairo_rectangle_t extents{0, 0, size_.width, size_.height};
    surface_ = cairo_recording_surface_create(CAIRO_CONTENT_COLOR_ALPHA, &extents);
    const auto context = CGContext::adopt(cairo_create(surface_), size_.height);
    if (!context) return;
    context->scaleBy(scale, scale);
    if (flipped) context->flip(bounds.size.height);
    context->translateBy(-bounds.origin.x, -bounds.origin.y);
    draw(*context);
}

LayerRecording::~LayerRecording() {
    if (surface_) cairo_surface_destroy(surface_);
}

void LayerRecording::replay(CGContext& context, const CGRect& rect) const {
    if (!surface_ || context.drawsNothing() || rect.size.width <= 0 || rect.size.height <= 0) return;
    cairo_t* const native = context.native();
    cairo_save(native);
    // The recording's rows run from the top, whichever way y runs here.
    const bool flipped = context.isFlipped();
    cairo_translate(native, rect.origin.x, rect.origin.y + (flipped ? 0 : rect.size.height));
    cairo_scale(native, rect.size.width / size_.width, (flipped ? 1 : -1) * rect.size.height / size_.height);
    cairo_set_source_surface(native, surface_, 0, 0);
    cairo_paint_with_alpha(native, context.alpha());
    cairo_restore(native);
}

}  // namespace zqcore::platform
