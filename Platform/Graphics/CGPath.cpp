#include "Platform/Graphics/CGPath.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "Platform/Graphics/CGRect.h"

namespace zqcore::platform {

namespace {

constexpr CGFloat kFullTurn = 2 * std::numbers::pi;
/// How far the control points of a quarter circle lie from its ends: 4/3 (sqrt 2 - 1).
constexpr CGFloat kQuarter = 0.55228474983079339840;

/// The signed turn from `start` to `end` in the wanted direction, at most one full turn.
CGFloat turnOf(CGFloat start, CGFloat end, bool clockwise) {
    CGFloat turn = clockwise ? start - end : end - start;
    if (turn < 0) turn = kFullTurn - std::fmod(-turn, kFullTurn);
    turn = std::min(turn, kFullTurn);
    return clockwise ? -turn : turn;
}

}  // namespace

std::shared_ptr<CGPath> CGPath::rect(const CGRect& rect) {
    auto path = make();
    path->addRect(rect);
    return path;
}

std::shared_ptr<CGPath> CGPath::roundedRect(const CGRect& rect, CGFloat radiusX, CGFloat radiusY) {
    auto path = make();
    path->addRoundedRect(rect, radiusX, radiusY);
    return path;
}

std::shared_ptr<CGPath> CGPath::ellipse(const CGRect& in) {
    auto path = make();
    path->addEllipse(in);
    return path;
}

void CGPath::moveTo(CGPoint point) {
    elements_.push_back({ElementKind::moveTo, {point}});
    current_ = start_ = point;
}

void CGPath::lineTo(CGPoint point) {
    if (isEmpty()) return moveTo(point);
    elements_.push_back({ElementKind::lineTo, {point}});
    current_ = point;
}

void CGPath::curveTo(CGPoint control1, CGPoint control2, CGPoint end) {
    if (isEmpty()) moveTo(control1);
    elements_.push_back({ElementKind::curveTo, {control1, control2, end}});
    current_ = end;
}

void CGPath::close() {
    if (isEmpty() || elements_.back().kind == ElementKind::closeSubpath) return;
    elements_.push_back({ElementKind::closeSubpath, {}});
    current_ = start_;
}

void CGPath::addRect(const CGRect& rect) {
    if (CGRectIsNull(rect)) return;
    const CGFloat right = rect.origin.x + rect.size.width;
    const CGFloat top = rect.origin.y + rect.size.height;
    moveTo(rect.origin);
    lineTo({right, rect.origin.y});
    lineTo({right, top});
    lineTo({rect.origin.x, top});
    close();
}

void CGPath::addRoundedRect(const CGRect& rect, CGFloat radiusX, CGFloat radiusY) {
    if (CGRectIsNull(rect)) return;
    const CGRect box = CGRectStandardize(rect);
    const CGFloat rx = std::clamp(radiusX, 0.0, box.size.width / 2);
    const CGFloat ry = std::clamp(radiusY, 0.0, box.size.height / 2);
    if (!(rx > 0 && ry > 0)) return addRect(box);
    const CGFloat left = box.origin.x, bottom = box.origin.y;
    const CGFloat right = left + box.size.width, top = bottom + box.size.height;
    const CGFloat cx = rx * (1 - kQuarter), cy = ry * (1 - kQuarter);
    moveTo({left + rx, bottom});
    lineTo({right - rx, bottom});
    curveTo({right - cx, bottom}, {right, bottom + cy}, {right, bottom + ry});
    lineTo({right, top - ry});
    curveTo({right, top - cy}, {right - cx, top}, {right - rx, top});
    lineTo({left + rx, top});
    curveTo({left + cx, top}, {left, top - cy}, {left, top - ry});
    lineTo({left, bottom + ry});
    curveTo({left, bottom + cy}, {left + cx, bottom}, {left + rx, bottom});
    close();
}

void CGPath::addEllipse(const CGRect& in) {
    addRoundedRect(in, std::abs(in.size.width) / 2, std::abs(in.size.height) / 2);
}

void CGPath::addArc(CGPoint center, CGFloat radius, CGFloat start, CGFloat end, bool clockwise) {
    const auto at = [&](CGFloat angle) {
        return CGPoint{center.x + radius * std::cos(angle), center.y + radius * std::sin(angle)};
    };
    if (isEmpty()) {
        moveTo(at(start));
    } else {
        lineTo(at(start));
    }
    const CGFloat turn = turnOf(start, end, clockwise);
    if (!std::isfinite(turn) || turn == 0) return;
    // A cubic follows a circle to 0.03 % over a quarter turn.
    const int pieces = static_cast<int>(std::ceil(std::abs(turn) / (std::numbers::pi / 2) - 1e-9));
    const CGFloat step = turn / pieces;
    const CGFloat reach = 4.0 / 3.0 * std::tan(step / 4) * radius;
    for (int i = 0; i < pieces; ++i) {
        const CGFloat from = start + step * i;
        const CGFloat to = start + step * (i + 1);
        const CGPoint first = at(from);
        const CGPoint last = at(to);
        curveTo({first.x - reach * std::sin(from), first.y + reach * std::cos(from)},
                {last.x + reach * std::sin(to), last.y - reach * std::cos(to)}, last);
    }
}

void CGPath::addPath(const CGPath& path, const CGAffineTransform& transform) {
    // A copy, since a path may be added to itself.
    const std::vector<Element> added = path.elements_;
    for (const Element& element : added) {
        const auto point = [&](std::size_t i) {
            return CGPointApplyAffineTransform(element.points[i], transform);
        };
        switch (element.kind) {
            case ElementKind::moveTo:
                moveTo(point(0));
                break;
            case ElementKind::lineTo:
                lineTo(point(0));
                break;
            case ElementKind::curveTo:
                curveTo(point(0), point(1), point(2));
                break;
            case ElementKind::closeSubpath:
                close();
                break;
        }
    }
}

CGRect CGPath::boundingBox() const noexcept {
    bool any = false;
    CGPoint low{}, high{};
    const auto take = [&](const CGPoint& point) {
        low = any ? CGPoint{std::min(low.x, point.x), std::min(low.y, point.y)} : point;
        high = any ? CGPoint{std::max(high.x, point.x), std::max(high.y, point.y)} : point;
        any = true;
    };
    for (const Element& element : elements_) {
        if (element.kind == ElementKind::closeSubpath) continue;
        take(element.points[0]);
        if (element.kind != ElementKind::curveTo) continue;
        take(element.points[1]);
        take(element.points[2]);
    }
    return any ? CGRect{low, {high.x - low.x, high.y - low.y}} : CGRectNull();
}

}  // namespace zqcore::platform
