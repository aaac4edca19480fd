#include "Platform/Graphics/CGContext.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "Platform/Graphics/CGImage.h"
#include "Platform/Graphics/CGPath.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/Linux/CairoHandles.h"
#include "Platform/Graphics/Linux/ContextShadow.h"

namespace zqcore::platform {

namespace {

struct State {
    bool flipped = false;
    /// The transform has no way back: cairo would refuse it for good, so it isn't told.
    bool flat = false;
    CGColor fill{0, 0, 0, 1};
    CGColor stroke{0, 0, 0, 1};
    CGFloat alpha = 1;
    CGInterpolationQuality quality = CGInterpolationQuality::standard;
};

/// A transparency layer that is being drawn.
struct Group {
    CGFloat alpha;
    std::optional<CGShadow> shadow;
    std::size_t states;  ///< how many states were saved before it
};

bool isFinite(const CGRect& rect) {
    return std::isfinite(rect.origin.x) && std::isfinite(rect.origin.y) && std::isfinite(rect.size.width) &&
           std::isfinite(rect.size.height);
}

cairo_operator_t operatorOf(CGBlendMode mode) {
    switch (mode) {
        case CGBlendMode::clear:
            return CAIRO_OPERATOR_CLEAR;
        case CGBlendMode::copy:
            return CAIRO_OPERATOR_SOURCE;
        case CGBlendMode::sourceIn:
            return CAIRO_OPERATOR_IN;
        case CGBlendMode::sourceOut:
            return CAIRO_OPERATOR_OUT;
        case CGBlendMode::sourceAtop:
            return CAIRO_OPERATOR_ATOP;
        case CGBlendMode::normal:
            break;
    }
    return CAIRO_OPERATOR_OVER;
}

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

struct CGContext::Impl {
    CairoContext cairo;
    std::shared_ptr<PixelBuffer> pixels;
    CGFloat pixelHeight = 0;
    State state;
    std::vector<State> saved;
    std::vector<Group> groups;

    void setSource(const CGColor& color) const {
        cairo_set_source_rgba(cairo.get(), color.red, color.green, color.blue, color.alpha * state.alpha);
    }
    void addRect(const CGRect& rect) const {
        cairo_new_path(cairo.get());
        cairo_rectangle(cairo.get(), rect.origin.x, rect.origin.y, rect.size.width, rect.size.height);
    }
    void endGroup(const CGImage* mask, const CGRect& rect);
};

void addToCairo(cairo_t* cairo, const CGPath& path) {
    cairo_new_path(cairo);
    for (const CGPath::Element& element : path.elements()) {
        const auto& [first, second, third] = element.points;
        switch (element.kind) {
            case CGPath::ElementKind::moveTo:
                cairo_move_to(cairo, first.x, first.y);
                break;
            case CGPath::ElementKind::lineTo:
                cairo_line_to(cairo, first.x, first.y);
                break;
            case CGPath::ElementKind::curveTo:
                cairo_curve_to(cairo, first.x, first.y, second.x, second.y, third.x, third.y);
                break;
            case CGPath::ElementKind::closeSubpath:
                cairo_close_path(cairo);
                break;
        }
    }
}

CGContext::CGContext(std::unique_ptr<Impl> impl) noexcept : impl_(std::move(impl)) {}

CGContext::~CGContext() {
    while (!impl_->groups.empty()) endTransparencyLayer();
}

std::shared_ptr<CGContext> CGContext::adopt(_cairo* native, CGFloat pixelHeight) {
    if (!native) return nullptr;
    auto impl = std::make_unique<Impl>();
    impl->cairo.reset(native);
    impl->pixelHeight = pixelHeight;
    cairo_translate(native, 0, pixelHeight);
    cairo_scale(native, 1, -1);
    return std::shared_ptr<CGContext>(new CGContext(std::move(impl)));
}

std::shared_ptr<CGContext> CGContext::bitmap(std::shared_ptr<PixelBuffer> pixels) {
    if (!pixels) return nullptr;
    const CairoSurface surface = surfaceOver(pixels);
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
    auto context = adopt(cairo_create(surface.get()), pixels->height());
    context->impl_->pixels = std::move(pixels);
    return context;
}

std::shared_ptr<CGContext> CGContext::bitmap(std::int64_t width, std::int64_t height) {
    return bitmap(PixelBuffer::make(width, height));
}

std::shared_ptr<CGContext> CGContext::bitmapContextCreate(std::int64_t width, std::int64_t height,
                                                          int bitsPerComponent, std::size_t bytesPerRow,
                                                          std::uint32_t bitmapInfo) {
    if (bitsPerComponent != 8) return nullptr;
    if (bitmapInfo != (kCGImageAlphaPremultipliedFirst | kCGBitmapByteOrder32Host)) return nullptr;
    return bitmap(PixelBuffer::make(width, height, bytesPerRow));
}

void CGContext::saveGState() {
    cairo_save(impl_->cairo.get());
    impl_->saved.push_back(impl_->state);
}

void CGContext::restoreGState() {
    const std::size_t floor = impl_->groups.empty() ? 0 : impl_->groups.back().states + 1;
    if (impl_->saved.size() <= floor) return;
    cairo_restore(impl_->cairo.get());
    impl_->state = impl_->saved.back();
    impl_->saved.pop_back();
}

void CGContext::translateBy(CGFloat x, CGFloat y) { concatenate(CGAffineTransformMakeTranslation(x, y)); }

void CGContext::scaleBy(CGFloat x, CGFloat y) { concatenate(CGAffineTransformMakeScale(x, y)); }

void CGContext::concatenate(const CGAffineTransform& transform) {
    if (!isInvertible(transform) || !isInvertible(CGAffineTransformConcat(transform, ctm()))) {
        impl_->state.flat = true;
        return;
    }
    cairo_matrix_t matrix;
    cairo_matrix_init(&matrix, transform.a, transform.b, transform.c, transform.d, transform.tx,
                      transform.ty);
    cairo_transform(impl_->cairo.get(), &matrix);
}

void CGContext::flip(CGFloat height) {
    concatenate({1, 0, 0, -1, 0, height});
    impl_->state.flipped = !impl_->state.flipped;
}

bool CGContext::isFlipped() const noexcept { return impl_->state.flipped; }

CGAffineTransform CGContext::ctm() const noexcept {
    cairo_matrix_t matrix;
    cairo_get_matrix(impl_->cairo.get(), &matrix);
    return {matrix.xx, -matrix.yx, matrix.xy, -matrix.yy, matrix.x0, impl_->pixelHeight - matrix.y0};
}

void CGContext::clipTo(const CGRect& rect) {
    if (!isFinite(rect)) {
        impl_->state.flat = true;
        return;
    }
    impl_->addRect(rect);
    cairo_clip(impl_->cairo.get());
}

void CGContext::clipTo(const CGPath& path, bool evenOdd) {
    cairo_t* cairo = impl_->cairo.get();
    addToCairo(cairo, path);
    cairo_set_fill_rule(cairo, evenOdd ? CAIRO_FILL_RULE_EVEN_ODD : CAIRO_FILL_RULE_WINDING);
    cairo_clip(cairo);
}

CGRect CGContext::clipBoundingBox() const {
    if (drawsNothing()) return {};
    double left = 0, top = 0, right = 0, bottom = 0;
    cairo_clip_extents(impl_->cairo.get(), &left, &top, &right, &bottom);
    return {{left, top}, {right - left, bottom - top}};
}

void CGContext::setFillColor(const CGColor& color) { impl_->state.fill = color; }
void CGContext::setStrokeColor(const CGColor& color) { impl_->state.stroke = color; }
void CGContext::setLineWidth(CGFloat width) {
    if (std::isfinite(width)) cairo_set_line_width(impl_->cairo.get(), std::max(0.0, width));
}
void CGContext::setLineCap(CGLineCap cap) {
    cairo_set_line_cap(impl_->cairo.get(), static_cast<cairo_line_cap_t>(cap));
}
void CGContext::setLineJoin(CGLineJoin join) {
    cairo_set_line_join(impl_->cairo.get(), static_cast<cairo_line_join_t>(join));
}
void CGContext::setAlpha(CGFloat alpha) { impl_->state.alpha = alpha > 0 ? std::min(alpha, 1.0) : 0; }
void CGContext::setBlendMode(CGBlendMode mode) { cairo_set_operator(impl_->cairo.get(), operatorOf(mode)); }
void CGContext::setInterpolationQuality(CGInterpolationQuality quality) { impl_->state.quality = quality; }
void CGContext::setShouldAntialias(bool antialias) {
    cairo_set_antialias(impl_->cairo.get(), antialias ? CAIRO_ANTIALIAS_DEFAULT : CAIRO_ANTIALIAS_NONE);
}

void CGContext::fill(const CGRect& rect) {
    if (drawsNothing() || !isFinite(rect)) return;
    impl_->setSource(impl_->state.fill);
    impl_->addRect(rect);
    cairo_fill(impl_->cairo.get());
}

void CGContext::fill(const CGPath& path, bool evenOdd) {
    if (drawsNothing()) return;
    cairo_t* cairo = impl_->cairo.get();
    impl_->setSource(impl_->state.fill);
    addToCairo(cairo, path);
    cairo_set_fill_rule(cairo, evenOdd ? CAIRO_FILL_RULE_EVEN_ODD : CAIRO_FILL_RULE_WINDING);
    cairo_fill(cairo);
}

void CGContext::stroke(const CGPath& path) {
    if (drawsNothing()) return;
    impl_->setSource(impl_->state.stroke);
    addToCairo(impl_->cairo.get(), path);
    cairo_stroke(impl_->cairo.get());
}

void CGContext::clear(const CGRect& rect) {
    if (drawsNothing() || !isFinite(rect)) return;
    cairo_t* cairo = impl_->cairo.get();
    const cairo_operator_t before = cairo_get_operator(cairo);
    cairo_set_operator(cairo, CAIRO_OPERATOR_CLEAR);
    impl_->addRect(rect);
    cairo_fill(cairo);
    cairo_set_operator(cairo, before);
}

void CGContext::drawImage(const CGImage& image, const CGRect& rect) {
    if (drawsNothing() || !isFinite(rect) || CGRectIsEmpty(rect)) return;
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

void CGContext::drawShadow(const CGPath& path, const CGShadow& shadow) {
    if (drawsNothing()) return;
    CGShadow shown = shadow;
    shown.color.alpha *= impl_->state.alpha;
    drawPathShadow(impl_->cairo.get(), path, shown);
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
    const Group group = std::move(groups.back());
    groups.pop_back();
    // cairo refuses to end a group inside a state that was saved in it.
    while (saved.size() > group.states + 1) {
        cairo_restore(target);
        saved.pop_back();
    }
    const CairoPattern drawn(cairo_pop_group(target));
    state = saved.back();
    saved.pop_back();
    if (!state.flat) {
        if (group.shadow) {
            CGShadow shadow = *group.shadow;
            shadow.color.alpha *= group.alpha;
            drawPatternShadow(target, drawn.get(), shadow);
        }
        cairo_set_source(target, drawn.get());
        if (!mask) {
            cairo_paint_with_alpha(target, group.alpha);
        } else if (isFinite(rect) && !CGRectIsEmpty(rect)) {
            const CairoPattern shape =
                patternOf(*mask, CGRectStandardize(rect), state.flipped, state.quality);
            addRect(rect);
            cairo_clip(target);
            cairo_push_group(target);
            cairo_set_source(target, drawn.get());
            cairo_mask(target, shape.get());
            cairo_pop_group_to_source(target);
            cairo_paint_with_alpha(target, group.alpha);
        }
    }
    cairo_restore(target);
}

void CGContext::endTransparencyLayer() {
    if (!impl_->groups.empty()) impl_->endGroup(nullptr, {});
}

void CGContext::endTransparencyLayer(const CGImage& mask, const CGRect& rect) {
    if (!impl_->groups.empty()) impl_->endGroup(&mask, rect);
}

int CGContext::width() const noexcept { return impl_->pixels ? impl_->pixels->width() : 0; }
int CGContext::height() const noexcept { return impl_->pixels ? impl_->pixels->height() : 0; }

std::shared_ptr<const CGImage> CGContext::makeImage() const {
    const auto drawn = pixels();
    return drawn ? CGImage::make(drawn->copy()) : nullptr;
}

void CGContext::flush() const { cairo_surface_flush(cairo_get_target(impl_->cairo.get())); }

std::shared_ptr<PixelBuffer> CGContext::pixels() const {
    flush();
    return impl_->pixels;
}

_cairo* CGContext::native() const noexcept { return impl_->cairo.get(); }
bool CGContext::drawsNothing() const noexcept { return impl_->state.flat; }
CGFloat CGContext::alpha() const noexcept { return impl_->state.alpha; }

}  // namespace zqcore::platform
