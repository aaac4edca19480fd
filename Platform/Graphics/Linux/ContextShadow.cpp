#include "Platform/Graphics/Linux/ContextShadow.h"

#include <algorithm>
#include <cmath>

#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/GaussianBlur.h"
#include "Platform/Graphics/Linux/CairoHandles.h"

namespace zqcore::platform {

namespace {

/// Whole device pixels, from `left`, `top` up to `right`, `bottom`.
struct DeviceBox {
    double left = 0, top = 0, right = 0, bottom = 0;

    [[nodiscard]] bool isEmpty() const noexcept { return !(right > left && bottom > top); }
};

/// What `extents` tells, in device pixels.
DeviceBox inDevice(cairo_t* cairo, decltype(cairo_clip_extents)& extents) {
    DeviceBox box;
    cairo_save(cairo);
    cairo_identity_matrix(cairo);
    extents(cairo, &box.left, &box.top, &box.right, &box.bottom);
    cairo_restore(cairo);
    return box;
}

DeviceBox clipInDevice(cairo_t* cairo) {
    const DeviceBox box = inDevice(cairo, cairo_clip_extents);
    return {std::floor(box.left), std::floor(box.top), std::ceil(box.right), std::ceil(box.bottom)};
}

/// What the shadow needs to know about device space.
struct Blur {
    double sigma;   ///< in device pixels
    double dx, dy;  ///< the offset in device pixels
};

Blur blurOf(cairo_t* cairo, const CGShadow& shadow) {
    cairo_matrix_t matrix;
    cairo_get_matrix(cairo, &matrix);
    Blur blur{};
    const double scale = std::sqrt(std::abs(matrix.xx * matrix.yy - matrix.xy * matrix.yx));
    blur.sigma = std::max(0.0, shadow.blur) / 2 * scale;
    blur.dx = shadow.offset.width;
    blur.dy = shadow.offset.height;
    cairo_user_to_device_distance(cairo, &blur.dx, &blur.dy);
    return blur;
}

/// The whole pixels within a rectangle of the present space; none if that lies aslant.
DeviceBox pixelsWithin(cairo_t* cairo, const CGRect& rect) {
    cairo_matrix_t matrix;
    cairo_get_matrix(cairo, &matrix);
    if (CGRectIsEmpty(rect) || matrix.xy != 0 || matrix.yx != 0) return {};
    double x1 = rect.origin.x, y1 = rect.origin.y;
    double x2 = x1 + rect.size.width, y2 = y1 + rect.size.height;
    cairo_user_to_device(cairo, &x1, &y1);
    cairo_user_to_device(cairo, &x2, &y2);
    return {std::ceil(std::min(x1, x2)), std::ceil(std::min(y1, y2)), std::floor(std::max(x1, x2)),
            std::floor(std::max(y1, y2))};
}

/// Leaves a box of the present clip out.
void clipOut(cairo_t* cairo, const DeviceBox& clip, const DeviceBox& out) {
    if (out.isEmpty()) return;
    cairo_new_path(cairo);
    for (const DeviceBox& box : {clip, out})
        cairo_rectangle(cairo, box.left, box.top, box.right - box.left, box.bottom - box.top);
    cairo_set_fill_rule(cairo, CAIRO_FILL_RULE_EVEN_ODD);
    cairo_clip(cairo);
}

/// Draws a shape by `drawShape` into a plane of alpha over `box`, blurs it and shows it in the shadow's
/// colour, but for the pixels within `out`.
template <class Draw>
void show(cairo_t* cairo, const DeviceBox& box, const Blur& blur, const CGColor& color, const DeviceBox& out,
          const Draw& drawShape) {
    const auto width = static_cast<int>(box.right - box.left);
    const auto height = static_cast<int>(box.bottom - box.top);
    const CairoSurface plane(cairo_image_surface_create(CAIRO_FORMAT_A8, width, height));
    if (cairo_surface_status(plane.get()) != CAIRO_STATUS_SUCCESS) return;
    {
        const CairoContext shape(cairo_create(plane.get()));
        cairo_matrix_t matrix;
        cairo_get_matrix(cairo, &matrix);
        matrix.x0 -= box.left;
        matrix.y0 -= box.top;
        cairo_set_matrix(shape.get(), &matrix);
        drawShape(shape.get());
    }
    cairo_surface_flush(plane.get());
    gaussianBlur(cairo_image_surface_get_data(plane.get()), width, height,
                 static_cast<std::size_t>(cairo_image_surface_get_stride(plane.get())), blur.sigma);
    cairo_surface_mark_dirty(plane.get());
    cairo_save(cairo);
    cairo_identity_matrix(cairo);
    clipOut(cairo, clipInDevice(cairo), out);
    cairo_set_source_rgba(cairo, color.red, color.green, color.blue, color.alpha);
    cairo_mask_surface(cairo, plane.get(), box.left + blur.dx, box.top + blur.dy);
    cairo_restore(cairo);
}

/// The part of the shape that can throw a shadow into the clip, with room for the blur round it.
DeviceBox workBox(const DeviceBox& shape, const DeviceBox& clip, const Blur& blur) {
    const int reach = gaussianReach(blur.sigma) + 1;
    const DeviceBox seen{clip.left - std::ceil(blur.dx) - reach, clip.top - std::ceil(blur.dy) - reach,
                         clip.right - std::floor(blur.dx) + reach, clip.bottom - std::floor(blur.dy) + reach};
    return {std::max(std::floor(shape.left) - reach, seen.left),
            std::max(std::floor(shape.top) - reach, seen.top),
            std::min(std::ceil(shape.right) + reach, seen.right),
            std::min(std::ceil(shape.bottom) + reach, seen.bottom)};
}

}  // namespace

void drawPathShadow(cairo_t* cairo, const CGPath& path, const CGShadow& shadow, const CGRect& covered) {
    if (!(shadow.color.alpha > 0)) return;
    const Blur blur = blurOf(cairo, shadow);
    const DeviceBox clip = clipInDevice(cairo);
    addToCairo(cairo, path);
    const DeviceBox box = workBox(inDevice(cairo, cairo_path_extents), clip, blur);
    cairo_new_path(cairo);
    if (clip.isEmpty() || box.isEmpty()) return;
    show(cairo, box, blur, shadow.color, pixelsWithin(cairo, covered), [&](cairo_t* shape) {
        addToCairo(shape, path);
        cairo_fill(shape);
    });
}

void drawPatternShadow(cairo_t* cairo, cairo_pattern_t* pattern, const CGShadow& shadow) {
    if (!(shadow.color.alpha > 0)) return;
    const Blur blur = blurOf(cairo, shadow);
    const DeviceBox clip = clipInDevice(cairo);
    if (clip.isEmpty()) return;
    // A group holds what lay in the clip, so that is the shape's box.
    show(cairo, workBox(clip, clip, blur), blur, shadow.color, {}, [&](cairo_t* shape) {
        cairo_set_source(shape, pattern);
        cairo_paint(shape);
    });
}

}  // namespace zqcore::platform
