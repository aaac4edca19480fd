#pragma once

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// x' = a x + c y + tx, y' = b x + d y + ty. Angles in radians, counter-clockwise where y grows upwards.
/// Threads: a value.
struct CGAffineTransform {
    CGFloat a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;
    friend bool operator==(const CGAffineTransform&, const CGAffineTransform&) = default;
};

inline constexpr CGAffineTransform CGAffineTransformIdentity{};

[[nodiscard]] constexpr CGAffineTransform CGAffineTransformMakeTranslation(CGFloat tx, CGFloat ty) noexcept {
    return {1, 0, 0, 1, tx, ty};
}
[[nodiscard]] constexpr CGAffineTransform CGAffineTransformMakeScale(CGFloat sx, CGFloat sy) noexcept {
    return {sx, 0, 0, sy, 0, 0};
}
[[nodiscard]] ZQ_EXPORT CGAffineTransform CGAffineTransformMakeRotation(CGFloat angle) noexcept;

/// First `first`, then `second`.
[[nodiscard]] ZQ_EXPORT CGAffineTransform CGAffineTransformConcat(const CGAffineTransform& first,
                                                                  const CGAffineTransform& second) noexcept;
/// Points are moved, scaled or turned first, then `transform` applies.
[[nodiscard]] ZQ_EXPORT CGAffineTransform CGAffineTransformTranslate(const CGAffineTransform& transform,
                                                                     CGFloat tx, CGFloat ty) noexcept;
[[nodiscard]] ZQ_EXPORT CGAffineTransform CGAffineTransformScale(const CGAffineTransform& transform,
                                                                 CGFloat sx, CGFloat sy) noexcept;
[[nodiscard]] ZQ_EXPORT CGAffineTransform CGAffineTransformRotate(const CGAffineTransform& transform,
                                                                  CGFloat angle) noexcept;
/// The way back; a transform that flattens the plane has none and is given back as it is.
[[nodiscard]] ZQ_EXPORT CGAffineTransform
CGAffineTransformInvert(const CGAffineTransform& transform) noexcept;
[[nodiscard]] ZQ_EXPORT bool CGAffineTransformIsIdentity(const CGAffineTransform& transform) noexcept;
/// Whether there is a way back: a determinant that is finite and not 0.
[[nodiscard]] ZQ_EXPORT bool isInvertible(const CGAffineTransform& transform) noexcept;

[[nodiscard]] ZQ_EXPORT CGPoint CGPointApplyAffineTransform(CGPoint point,
                                                            const CGAffineTransform& transform) noexcept;
/// The smallest upright rectangle round the four transformed corners; the null rectangle stays what it is.
[[nodiscard]] ZQ_EXPORT CGRect CGRectApplyAffineTransform(const CGRect& rect,
                                                          const CGAffineTransform& transform) noexcept;

}  // namespace zqcore::platform
