#include "Classes/UI/TipManager/FrameCalculator.h"

#include <algorithm>

#include "Platform/Graphics/CGRect.h"

namespace zqcore {

CGRect FrameCalculator::calculateSuitable(const CGRect& contentFrame, const CGRect& visibleFrame,
                                          const NSEdgeInsets& minInsets,
                                          LimitDirections limitDirections) noexcept {
    const NSEdgeInsets insets{std::max(minInsets.top, 0.0), std::max(minInsets.left, 0.0),
                              std::max(minInsets.bottom, 0.0), std::max(minInsets.right, 0.0)};
    const CGRect& visible = visibleFrame;
    CGRect frame = CGRectIntegral(contentFrame);

    // The order decides who wins in a space that is too small: what is applied last.
    if (limitDirections.contains(LimitDirections::right))
        frame.origin.x =
            std::min(frame.origin.x, visible.origin.x + visible.size.width - frame.size.width - insets.right);
    if (limitDirections.contains(LimitDirections::bottom))
        frame.origin.y = std::max(frame.origin.y, visible.origin.y + insets.bottom);
    if (limitDirections.contains(LimitDirections::top))
        frame.origin.y =
            std::min(frame.origin.y, visible.origin.y + visible.size.height - frame.size.height - insets.top);
    if (limitDirections.contains(LimitDirections::left))
        frame.origin.x = std::max(frame.origin.x, visible.origin.x + insets.left);
    return CGRectIntegral(frame);
}

}  // namespace zqcore
