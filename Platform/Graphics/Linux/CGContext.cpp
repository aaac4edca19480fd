#include "Platform/Graphics/CGContext.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Platform/Graphics/CGPath.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/Linux/ContextShadow.h"
#include "Platform/Graphics/Linux/ContextState.h"

namespace zqcore::platform {

namespace {

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

}  // namespace

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
