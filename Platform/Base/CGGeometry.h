#pragma once

namespace zqcore::platform {

/// A length or coordinate, in points.
using CGFloat = double;

/// A place, in points; on screens the origin lies at the lower left. Threads: a value.
struct CGPoint {
    CGFloat x = 0;
    CGFloat y = 0;
    friend bool operator==(const CGPoint&, const CGPoint&) = default;
};

}  // namespace zqcore::platform
