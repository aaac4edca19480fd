#pragma once

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"

namespace zqcore {

/// Tells on which sides a rectangle sticks out of another.
/// Units: points; y grows upwards. Threads: any. Failure: none.
class ZQ_EXPORT FrameChecker final {
  public:
    FrameChecker() = delete;

    /// One answer. Edges that touch are inside; a larger element can be out on two opposite sides at once.
    class Result final {
      public:
        bool isTopOut = false;
        bool isLeftOut = false;
        bool isRightOut = false;
        bool isBottomOut = false;

        /// Whether the element is out on no side.
        [[nodiscard]] bool isAllInside() const noexcept {
            return !isTopOut && !isLeftOut && !isRightOut && !isBottomOut;
        }
    };

    [[nodiscard]] static Result check(const CGRect& containerFrame, const CGRect& elementFrame) noexcept;
};

/// Whether the point lies in the rectangle or on one of its four edges, where `NSPointInRect` leaves out the
/// top and the right one.
[[nodiscard]] ZQ_EXPORT bool ZQPointInRect(CGPoint point, const CGRect& rect) noexcept;

}  // namespace zqcore
