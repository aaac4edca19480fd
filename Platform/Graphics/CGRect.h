#pragma once

#include <string>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"
#include "Platform/Base/NSRange.h"

// Arithmetic on rectangles, under the platform's names. Threads: any; nothing fails.
namespace zqcore::platform {

[[nodiscard]] constexpr CGRect CGRectMake(CGFloat x, CGFloat y, CGFloat width, CGFloat height) noexcept {
    return {{x, y}, {width, height}};
}
/// The rectangle that is nowhere: what an intersection of strangers gives.
[[nodiscard]] ZQ_EXPORT CGRect CGRectNull() noexcept;
[[nodiscard]] ZQ_EXPORT bool CGRectIsNull(const CGRect& rect) noexcept;
/// Whether it has no area; the null rectangle has none.
[[nodiscard]] ZQ_EXPORT bool CGRectIsEmpty(const CGRect& rect) noexcept;
/// The same place with sides that are not negative.
[[nodiscard]] ZQ_EXPORT CGRect CGRectStandardize(const CGRect& rect) noexcept;
/// Smallest and largest coordinates and the middle, whatever the signs of the sides.
[[nodiscard]] ZQ_EXPORT CGFloat CGRectGetMinX(const CGRect& rect) noexcept;
[[nodiscard]] ZQ_EXPORT CGFloat CGRectGetMidX(const CGRect& rect) noexcept;
[[nodiscard]] ZQ_EXPORT CGFloat CGRectGetMaxX(const CGRect& rect) noexcept;
[[nodiscard]] ZQ_EXPORT CGFloat CGRectGetMinY(const CGRect& rect) noexcept;
[[nodiscard]] ZQ_EXPORT CGFloat CGRectGetMidY(const CGRect& rect) noexcept;
[[nodiscard]] ZQ_EXPORT CGFloat CGRectGetMaxY(const CGRect& rect) noexcept;
/// The smallest rectangle with whole edges round `rect`; the null rectangle stays what it is.
[[nodiscard]] ZQ_EXPORT CGRect CGRectIntegral(const CGRect& rect) noexcept;
[[nodiscard]] ZQ_EXPORT CGRect CGRectUnion(const CGRect& a, const CGRect& b) noexcept;
/// The common part, the null rectangle without one; touching edges give an empty one.
[[nodiscard]] ZQ_EXPORT CGRect CGRectIntersection(const CGRect& a, const CGRect& b) noexcept;
[[nodiscard]] ZQ_EXPORT CGRect CGRectOffset(const CGRect& rect, CGFloat dx, CGFloat dy) noexcept;
/// Moves the edges inwards; the null rectangle when nothing is left.
[[nodiscard]] ZQ_EXPORT CGRect CGRectInset(const CGRect& rect, CGFloat dx, CGFloat dy) noexcept;
/// Smallest edges inside, largest outside; an empty rectangle holds nothing.
[[nodiscard]] ZQ_EXPORT bool CGRectContainsPoint(const CGRect& rect, CGPoint point) noexcept;
/// Whether the union of both is `a`: shared edges are inside.
[[nodiscard]] ZQ_EXPORT bool CGRectContainsRect(const CGRect& a, const CGRect& b) noexcept;
/// As `CGRectContainsPoint`, with the point first.
[[nodiscard]] ZQ_EXPORT bool NSPointInRect(CGPoint point, const CGRect& rect) noexcept;
/// The hit test's rule: on y the edge that is nearer the top of the screen is inside.
[[nodiscard]] ZQ_EXPORT bool NSMouseInRect(CGPoint point, const CGRect& rect, bool flipped) noexcept;

/// "{{x, y}, {width, height}}" and "{width, height}": whole numbers without a point, others as the shortest
/// decimal text that reads back the same.
[[nodiscard]] ZQ_EXPORT std::string NSStringFromRect(const CGRect& rect);
[[nodiscard]] ZQ_EXPORT std::string NSStringFromSize(CGSize size);

}  // namespace zqcore::platform
