#include "Platform/QuartzCore/CAShapeLayer.h"

#include <algorithm>

#include "Platform/Graphics/CGPath.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/QuartzCore/AnimatedValue.h"
#include "Platform/QuartzCore/PathMeasure.h"

namespace zqcore::platform {

struct CAShapeLayer::Shape {
    std::shared_ptr<const CGPath> path;
    AnimatedValue<CGColor> fillColor{CGColor::white(0)};
    AnimatedValue<CGColor> strokeColor;
    AnimatedValue<CGFloat> lineWidth{1};
    AnimatedValue<CGFloat> strokeStart{0};
    AnimatedValue<CGFloat> strokeEnd{1};
    CAShapeLayerLineCap lineCap = kCALineCapButt;

    template <class Body>
    void forEachAnimated(const Body& body) {
        body(fillColor);
        body(strokeColor);
        body(lineWidth);
        body(strokeStart);
        body(strokeEnd);
    }
};

CAShapeLayer::CAShapeLayer() : shape_(std::make_unique<Shape>()) {}
CAShapeLayer::~CAShapeLayer() = default;

const std::shared_ptr<const CGPath>& CAShapeLayer::path() const { return shape_->path; }
void CAShapeLayer::setPath(std::shared_ptr<const CGPath> path) {
    if (path == shape_->path) return;
    shape_->path = std::move(path);
    didChange();
}

CGColor CAShapeLayer::fillColor() const { return shape_->fillColor.value(); }
void CAShapeLayer::setFillColor(const CGColor& color) {
    if (color == fillColor()) return;
    didChange(shape_->fillColor.set(color, termsOfChange()));
}

CGColor CAShapeLayer::strokeColor() const { return shape_->strokeColor.value(); }
void CAShapeLayer::setStrokeColor(const CGColor& color) {
    if (color == strokeColor()) return;
    didChange(shape_->strokeColor.set(color, termsOfChange()));
}

CGFloat CAShapeLayer::lineWidth() const { return shape_->lineWidth.value(); }
void CAShapeLayer::setLineWidth(CGFloat width) {
    if (width == lineWidth()) return;
    didChange(shape_->lineWidth.set(width, termsOfChange()));
}

CAShapeLayerLineCap CAShapeLayer::lineCap() const { return shape_->lineCap; }
void CAShapeLayer::setLineCap(CAShapeLayerLineCap cap) {
    if (cap == shape_->lineCap) return;
    shape_->lineCap = cap;
    didChange();
}

CGFloat CAShapeLayer::strokeStart() const { return shape_->strokeStart.value(); }
void CAShapeLayer::setStrokeStart(CGFloat fraction) {
    if (fraction == strokeStart()) return;
    didChange(shape_->strokeStart.set(fraction, termsOfChange()));
}

CGFloat CAShapeLayer::strokeEnd() const { return shape_->strokeEnd.value(); }
void CAShapeLayer::setStrokeEnd(CGFloat fraction) {
    if (fraction == strokeEnd()) return;
    didChange(shape_->strokeEnd.set(fraction, termsOfChange()));
}

CAShapeLayer::StrokePart CAShapeLayer::presentationStroke() const {
    const Clock::Instant now = Clock::current().now();
    return {shape_->strokeStart.shownAt(now), shape_->strokeEnd.shownAt(now)};
}

void CAShapeLayer::removeAllAnimations() {
    shape_->forEachAnimated([](auto& value) { value.stop(); });
    CALayer::removeAllAnimations();
}

Clock::Instant CAShapeLayer::animationsEnd() const {
    Clock::Instant end = CALayer::animationsEnd();
    shape_->forEachAnimated([&end](const auto& value) { end = std::max(end, value.end()); });
    return end;
}

bool CAShapeLayer::hasContents() const { return shape_->path || CALayer::hasContents(); }

// The path goes where it likes, the corners of its stroke up to the miter limit beyond it.
CGRect CAShapeLayer::paintedRect(const CGRect& bounds, Clock::Instant now) const {
    const CGRect own = CALayer::paintedRect(bounds, now);
    if (!shape_->path) return own;
    constexpr CGFloat kMiterLimit = 10;
    const CGFloat reach = std::max(0.0, shape_->lineWidth.shownAt(now)) * kMiterLimit / 2;
    return CGRectUnion(own, CGRectInset(shape_->path->boundingBox(), -reach, -reach));
}

void CAShapeLayer::drawContents(CGContext& context, const CGRect& bounds, Clock::Instant now) {
    CALayer::drawContents(context, bounds, now);
    const Shape& shape = *shape_;
    if (!shape.path) return;
    if (const CGColor fill = shape.fillColor.shownAt(now); fill.alpha > 0) {
        context.setFillColor(fill);
        context.fill(*shape.path);
    }
    const CGColor stroke = shape.strokeColor.shownAt(now);
    const CGFloat width = shape.lineWidth.shownAt(now);
    const CGFloat start = std::clamp(shape.strokeStart.shownAt(now), 0.0, 1.0);
    const CGFloat end = std::clamp(shape.strokeEnd.shownAt(now), 0.0, 1.0);
    if (!(stroke.alpha > 0) || !(width > 0) || !(start < end)) return;
    context.setStrokeColor(stroke);
    context.setLineWidth(width);
    context.setLineCap(shape.lineCap);
    const bool whole = start == 0 && end == 1;  // keeps closed corners joined
    context.stroke(whole ? *shape.path : *partOfPath(*shape.path, start, end));
}

}  // namespace zqcore::platform
