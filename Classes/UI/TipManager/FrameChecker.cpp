#include "Classes/UI/TipManager/FrameChecker.h"

namespace zqcore {

FrameChecker::Result FrameChecker::check(const CGRect& containerFrame, const CGRect& elementFrame) noexcept {
    const auto& [containerOrigin, containerSize] = containerFrame;
    const auto& [origin, size] = elementFrame;
    Result result;
    result.isTopOut = containerOrigin.y + containerSize.height < origin.y + size.height;
    result.isLeftOut = origin.x < containerOrigin.x;
    result.isBottomOut = origin.y < containerOrigin.y;
    result.isRightOut = containerOrigin.x + containerSize.width < origin.x + size.width;
    return result;
}

bool ZQPointInRect(CGPoint point, const CGRect& rect) noexcept {
    return point.x >= rect.origin.x && point.x <= rect.origin.x + rect.size.width &&
           point.y >= rect.origin.y && point.y <= rect.origin.y + rect.size.height;
}

}  // namespace zqcore
