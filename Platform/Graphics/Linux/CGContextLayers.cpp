// Images, gradients, shadows and layers of CGContext.
#include <algorithm>
#include <cmath>
#include <utility>

#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/ImageScaler.h"
#include "Platform/Graphics/Linux/ContextShadow.h"
#include "Platform/Graphics/Linux/ContextState.h"

namespace zqcore::platform {

namespace {

cairo_filter_t filterOf(CGInterpolationQuality quality) {
    switch (quality) {
        case CGInterpolationQuality::none:
            return CAIRO_FILTER_NEAREST;
        case CGInterpolationQuality::low:
            return CAIRO_FILTER_BILINEAR;
        case CGInterpolationQuality::high:
            return CAIRO_FILTER_BEST;
        case CGInterpolationQuality::standard:
        case CGInterpolationQuality::medium:
            break;
    }
    return CAIRO_FILTER_GOOD;
}

/// The image as a pattern that covers `rect`, upright.
CairoPattern patternOf(const CGImage& image, const CGRect& rect, bool flipped,
                       CGInterpolationQuality quality) {
    const CairoSurface surface = surfaceOver(image.pixels());
    CairoPattern pattern(cairo_pattern_create_for_surface(surface.get()));
    const double sx = image.width() / rect.size.width;
    const double sy = image.height() / rect.size.height;
    cairo_matrix_t toImage;
    if (flipped) {
        cairo_matrix_init(&toImage, sx, 0, 0, sy, -rect.origin.x * sx, -rect.origin.y * sy);
    } else {
        cairo_matrix_init(&toImage, sx, 0, 0, -sy, -rect.origin.x * sx,
                          (rect.origin.y + rect.size.height) * sy);
    }
    cairo_pattern_set_matrix(pattern.get(), &toImage);
    // Padded, so that the edge pixels don't blend with the nothing outside.
    cairo_pattern_set_extend(pattern.get(), CAIRO_EXTEND_PAD);
    cairo_pattern_set_filter(pattern.get(), filterOf(quality));
    return pattern;
}

}  // namespace

/// The image in as many pixels as it will cover, if that can be told and is another number.
std::shared_ptr<const CGImage> CGContext::Impl::scaledToPlace(const CGImage& image,
                                                              const CGRect& rect) const {
    cairo_matrix_t matrix;
    cairo_get_matrix(cairo.get(), &matrix);
    if (state.quality != CGInterpolationQuality::high || matrix.xy != 0 || matrix.yx != 0) return nullptr;
    const double width = std::round(std::abs(rect.size.width * matrix.xx));
    const double height = std::round(std::abs(rect.size.height * matrix.yy));
    constexpr double largest = PixelBuffer::kLargestSide;
    if (width < 1 || height < 1 || width > largest || height > largest) return nullptr;
    if (width == image.width() && height == image.height()) return nullptr;
    return CGImage::make(scaledPixels(*image.pixels(), static_cast<int>(width), static_cast<int>(height)));
}

void CGContext::drawImage(const CGImage& original, const CGRect& rect) {
    if (drawsNothing() || !isFinite(rect) || CGRectIsEmpty(rect)) return;
    const auto scaled = impl_->scaledToPlace(original, rect);
    const CGImage& image = scaled ? *scaled : original;
    cairo_t* cairo = impl_->cairo.get();
    const CGRect place = CGRectStandardize(rect);
    const CairoPattern pattern = patternOf(image, place, impl_->state.flipped, impl_->state.quality);
    cairo_save(cairo);
    cairo_set_source(cairo, pattern.get());
    impl_->addRect(place);
    if (impl_->state.alpha < 1) {
        cairo_clip(cairo);
        cairo_paint_with_alpha(cairo, impl_->state.alpha);
    } else {
        cairo_fill(cairo);
    }
    cairo_restore(cairo);
}

void CGContext::fillMask(const CGImage& image, const CGRect& rect) {
    if (drawsNothing() || !isFinite(rect) || CGRectIsEmpty(rect)) return;
    cairo_t* cairo = impl_->cairo.get();
    const CGRect place = CGRectStandardize(rect);
    const CairoPattern pattern = patternOf(image, place, impl_->state.flipped, impl_->state.quality);
    cairo_save(cairo);
    impl_->addRect(place);
    cairo_clip(cairo);
    impl_->setSource(impl_->state.fill);
    cairo_mask(cairo, pattern.get());
    cairo_restore(cairo);
}

void CGContext::drawLinearGradient(std::span<const CGColor> colors, std::span<const CGFloat> locations,
                                   CGPoint start, CGPoint end) {
    if (drawsNothing() || colors.empty()) return;
    const CairoPattern pattern(cairo_pattern_create_linear(start.x, start.y, end.x, end.y));
    const bool placed = locations.size() == colors.size();
    for (std::size_t i = 0; i < colors.size(); ++i) {
        const double evenly = colors.size() == 1 ? 0 : double(i) / double(colors.size() - 1);
        cairo_pattern_add_color_stop_rgba(pattern.get(), placed ? locations[i] : evenly, colors[i].red,
                                          colors[i].green, colors[i].blue, colors[i].alpha);
    }
    cairo_set_source(impl_->cairo.get(), pattern.get());
    cairo_paint_with_alpha(impl_->cairo.get(), impl_->state.alpha);
}

void CGContext::drawShadow(const CGPath& path, const CGShadow& shadow, const CGRect& covered) {
    if (drawsNothing()) return;
    CGShadow shown = shadow;
    shown.color.alpha *= impl_->state.alpha;
    drawPathShadow(impl_->cairo.get(), path, shown, covered);
}

void CGContext::beginTransparencyLayer(CGFloat alpha, const std::optional<CGShadow>& shadow) {
    const std::size_t states = impl_->saved.size();
    saveGState();
    impl_->groups.push_back({std::clamp(alpha, 0.0, 1.0) * impl_->state.alpha, shadow, states});
    impl_->state.alpha = 1;
    cairo_push_group(impl_->cairo.get());
    cairo_set_operator(impl_->cairo.get(), CAIRO_OPERATOR_OVER);
}

void CGContext::Impl::endGroup(const CGImage* mask, const CGRect& rect) {
    cairo_t* const target = cairo.get();
    const ContextGroup group = groups.back();
    groups.pop_back();
    // cairo refuses to end a group inside a state that was saved in it.
    while (saved.size() > group.states + 1) {
        cairo_restore(target);
        saved.pop_back();
    }
    const CairoPattern drawn(cairo_pop_group(target));
    state = saved.back();
    saved.pop_back();
    if (!state.flat && !group.shadow && !mask) {
        cairo_set_source(target, drawn.get());
        cairo_paint_with_alpha(target, group.alpha);
    } else if (!state.flat) {
        // Shadow, mask and content fade as one, so they are put together at full strength first.
        cairo_push_group(target);
        cairo_set_operator(target, CAIRO_OPERATOR_OVER);
        if (group.shadow) drawPatternShadow(target, drawn.get(), *group.shadow);
        cairo_set_source(target, drawn.get());
        if (!mask) {
            cairo_paint(target);
        } else if (isFinite(rect) && !CGRectIsEmpty(rect)) {
            const CairoPattern shape =
                patternOf(*mask, CGRectStandardize(rect), state.flipped, state.quality);
            addRect(rect);
            cairo_clip(target);
            cairo_mask(target, shape.get());
        }
        cairo_pop_group_to_source(target);
        cairo_paint_with_alpha(target, group.alpha);
    }
    cairo_restore(target);
}

void CGContext::endTransparencyLayer() {
    if (!impl_->groups.empty()) impl_->endGroup(nullptr, {});
}

void CGContext::endTransparencyLayer(const CGImage& mask, const CGRect& rect) {
    if (!impl_->groups.empty()) impl_->endGroup(&mask, rect);
}

}  // namespace zqcore::platform
