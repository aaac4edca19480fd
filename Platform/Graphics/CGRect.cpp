#include "Platform/Graphics/CGRect.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace zqcore::platform {

namespace {

constexpr CGFloat kInfinity = std::numeric_limits<CGFloat>::infinity();

std::string text(CGFloat value) {
    // The longest shortest form of a double in plain notation: sign, 309 digits, or "0." and 324 digits.
    char buffer[352];
    const auto end =
        std::to_chars(buffer, buffer + sizeof buffer, value == 0 ? 0.0 : value, std::chars_format::fixed);
    return {buffer, end.ptr};
}

CGRect fromEdges(CGFloat minX, CGFloat minY, CGFloat maxX, CGFloat maxY) {
    return {{minX, minY}, {maxX - minX, maxY - minY}};
}

}  // namespace

CGRect CGRectNull() noexcept { return {{kInfinity, kInfinity}, {0, 0}}; }

bool CGRectIsNull(const CGRect& rect) noexcept {
    return rect.origin.x == kInfinity || rect.origin.y == kInfinity;
}

bool CGRectIsEmpty(const CGRect& rect) noexcept {
    return CGRectIsNull(rect) || rect.size.width == 0 || rect.size.height == 0;
}

CGFloat CGRectGetMinX(const CGRect& rect) noexcept { return rect.origin.x + std::min(rect.size.width, 0.0); }
CGFloat CGRectGetMidX(const CGRect& rect) noexcept { return rect.origin.x + rect.size.width * 0.5; }
CGFloat CGRectGetMaxX(const CGRect& rect) noexcept { return rect.origin.x + std::max(rect.size.width, 0.0); }
CGFloat CGRectGetMinY(const CGRect& rect) noexcept { return rect.origin.y + std::min(rect.size.height, 0.0); }
CGFloat CGRectGetMidY(const CGRect& rect) noexcept { return rect.origin.y + rect.size.height * 0.5; }
CGFloat CGRectGetMaxY(const CGRect& rect) noexcept { return rect.origin.y + std::max(rect.size.height, 0.0); }

CGRect CGRectStandardize(const CGRect& rect) noexcept {
    return {{CGRectGetMinX(rect), CGRectGetMinY(rect)},
            {std::fabs(rect.size.width), std::fabs(rect.size.height)}};
}

CGRect CGRectIntegral(const CGRect& rect) noexcept {
    if (CGRectIsNull(rect)) return rect;
    return fromEdges(std::floor(CGRectGetMinX(rect)), std::floor(CGRectGetMinY(rect)),
                     std::ceil(CGRectGetMaxX(rect)), std::ceil(CGRectGetMaxY(rect)));
}

CGRect CGRectUnion(const CGRect& a, const CGRect& b) noexcept {
    if (CGRectIsNull(a)) return b;
    if (CGRectIsNull(b)) return a;
    return fromEdges(
        std::min(CGRectGetMinX(a), CGRectGetMinX(b)), std::min(CGRectGetMinY(a), CGRectGetMinY(b)),
        std::max(CGRectGetMaxX(a), CGRectGetMaxX(b)), std::max(CGRectGetMaxY(a), CGRectGetMaxY(b)));
}

CGRect CGRectIntersection(const CGRect& a, const CGRect& b) noexcept {
    if (CGRectIsNull(a) || CGRectIsNull(b)) return CGRectNull();
    const CGFloat minX = std::max(CGRectGetMinX(a), CGRectGetMinX(b));
    const CGFloat minY = std::max(CGRectGetMinY(a), CGRectGetMinY(b));
    const CGFloat maxX = std::min(CGRectGetMaxX(a), CGRectGetMaxX(b));
    const CGFloat maxY = std::min(CGRectGetMaxY(a), CGRectGetMaxY(b));
    if (maxX < minX || maxY < minY) return CGRectNull();
    return fromEdges(minX, minY, maxX, maxY);
}

CGRect CGRectOffset(const CGRect& rect, CGFloat dx, CGFloat dy) noexcept {
    if (CGRectIsNull(rect)) return rect;
    return {{rect.origin.x + dx, rect.origin.y + dy}, rect.size};
}

CGRect CGRectInset(const CGRect& rect, CGFloat dx, CGFloat dy) noexcept {
    if (CGRectIsNull(rect)) return rect;
    const CGRect whole = CGRectStandardize(rect);
    const CGSize size{whole.size.width - 2 * dx, whole.size.height - 2 * dy};
    if (size.width < 0 || size.height < 0) return CGRectNull();
    return {{whole.origin.x + dx, whole.origin.y + dy}, size};
}

bool CGRectContainsPoint(const CGRect& rect, CGPoint point) noexcept {
    return point.x >= CGRectGetMinX(rect) && point.x < CGRectGetMaxX(rect) &&
           point.y >= CGRectGetMinY(rect) && point.y < CGRectGetMaxY(rect);
}

bool CGRectContainsRect(const CGRect& a, const CGRect& b) noexcept {
    if (CGRectIsNull(a)) return CGRectIsNull(b);
    if (CGRectIsNull(b)) return true;
    return CGRectGetMinX(b) >= CGRectGetMinX(a) && CGRectGetMaxX(b) <= CGRectGetMaxX(a) &&
           CGRectGetMinY(b) >= CGRectGetMinY(a) && CGRectGetMaxY(b) <= CGRectGetMaxY(a);
}

bool NSPointInRect(CGPoint point, const CGRect& rect) noexcept { return CGRectContainsPoint(rect, point); }

bool NSMouseInRect(CGPoint point, const CGRect& rect, bool flipped) noexcept {
    if (flipped) return CGRectContainsPoint(rect, point);
    return point.x >= CGRectGetMinX(rect) && point.x < CGRectGetMaxX(rect) && point.y > CGRectGetMinY(rect) &&
           point.y <= CGRectGetMaxY(rect);
}

std::string NSStringFromSize(CGSize size) { return "{" + text(size.width) + ", " + text(size.height) + "}"; }

std::string NSStringFromRect(const CGRect& rect) {
    return "{{" + text(rect.origin.x) + ", " + text(rect.origin.y) + "}, " + NSStringFromSize(rect.size) +
           "}";
}

}  // namespace zqcore::platform
