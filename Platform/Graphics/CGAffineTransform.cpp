#include "Platform/Graphics/CGAffineTransform.h"

#include <algorithm>
#include <cmath>

#include "Platform/Graphics/CGRect.h"

namespace zqcore::platform {

CGAffineTransform CGAffineTransformMakeRotation(CGFloat angle) noexcept {
    const CGFloat cosine = std::cos(angle);
    const CGFloat sine = std::sin(angle);
    return {cosine, sine, -sine, cosine, 0, 0};
}

CGAffineTransform CGAffineTransformConcat(const CGAffineTransform& first,
                                          const CGAffineTransform& second) noexcept {
    return {first.a * second.a + first.b * second.c,
            first.a * second.b + first.b * second.d,
            first.c * second.a + first.d * second.c,
            first.c * second.b + first.d * second.d,
            first.tx * second.a + first.ty * second.c + second.tx,
            first.tx * second.b + first.ty * second.d + second.ty};
}

CGAffineTransform CGAffineTransformTranslate(const CGAffineTransform& transform, CGFloat tx,
                                             CGFloat ty) noexcept {
    return CGAffineTransformConcat(CGAffineTransformMakeTranslation(tx, ty), transform);
}

CGAffineTransform CGAffineTransformScale(const CGAffineTransform& transform, CGFloat sx,
                                         CGFloat sy) noexcept {
    return CGAffineTransformConcat(CGAffineTransformMakeScale(sx, sy), transform);
}

CGAffineTransform CGAffineTransformRotate(const CGAffineTransform& transform, CGFloat angle) noexcept {
    return CGAffineTransformConcat(CGAffineTransformMakeRotation(angle), transform);
}

bool isInvertible(const CGAffineTransform& transform) noexcept {
    const CGFloat determinant = transform.a * transform.d - transform.b * transform.c;
    return std::isfinite(determinant) && determinant != 0 && std::isfinite(transform.tx) &&
           std::isfinite(transform.ty);
}

CGAffineTransform CGAffineTransformInvert(const CGAffineTransform& transform) noexcept {
    if (!isInvertible(transform)) return transform;
    const auto& [a, b, c, d, tx, ty] = transform;
    const CGFloat determinant = a * d - b * c;
    return {d / determinant,
            -b / determinant,
            -c / determinant,
            a / determinant,
            (c * ty - d * tx) / determinant,
            (b * tx - a * ty) / determinant};
}

bool CGAffineTransformIsIdentity(const CGAffineTransform& transform) noexcept {
    return transform == CGAffineTransformIdentity;
}

CGPoint CGPointApplyAffineTransform(CGPoint point, const CGAffineTransform& transform) noexcept {
    return {transform.a * point.x + transform.c * point.y + transform.tx,
            transform.b * point.x + transform.d * point.y + transform.ty};
}

CGRect CGRectApplyAffineTransform(const CGRect& rect, const CGAffineTransform& transform) noexcept {
    if (CGRectIsNull(rect)) return rect;
    const CGRect upright = CGRectStandardize(rect);
    const CGFloat right = upright.origin.x + upright.size.width;
    const CGFloat top = upright.origin.y + upright.size.height;
    const CGPoint corners[] = {CGPointApplyAffineTransform(upright.origin, transform),
                               CGPointApplyAffineTransform({right, upright.origin.y}, transform),
                               CGPointApplyAffineTransform({right, top}, transform),
                               CGPointApplyAffineTransform({upright.origin.x, top}, transform)};
    CGPoint low = corners[0];
    CGPoint high = corners[0];
    for (const CGPoint& corner : corners) {
        low = {std::min(low.x, corner.x), std::min(low.y, corner.y)};
        high = {std::max(high.x, corner.x), std::max(high.y, corner.y)};
    }
    return {low, {high.x - low.x, high.y - low.y}};
}

}  // namespace zqcore::platform
