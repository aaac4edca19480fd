#pragma once

#include <cstddef>

namespace zqcore::platform {

/// A length or coordinate, in points.
using CGFloat = double;

/// A place, in points; on screens the origin lies at the lower left. Threads: a value.
struct CGPoint {
    CGFloat x = 0;
    CGFloat y = 0;
    friend bool operator==(const CGPoint&, const CGPoint&) = default;
};

/// A width and a height, in points; either may be negative where the platform allows it.
struct CGSize {
    CGFloat width = 0;
    CGFloat height = 0;
    friend bool operator==(const CGSize&, const CGSize&) = default;
};

/// A rectangle by its origin (the lower left corner where y grows upwards) and size, in points.
struct CGRect {
    CGPoint origin;
    CGSize size;
    friend bool operator==(const CGRect&, const CGRect&) = default;
};

/// Distances from the four edges, in the platform's order.
struct NSEdgeInsets {
    CGFloat top = 0;
    CGFloat left = 0;
    CGFloat bottom = 0;
    CGFloat right = 0;
    friend bool operator==(const NSEdgeInsets&, const NSEdgeInsets&) = default;
};

}  // namespace zqcore::platform
