#include "Classes/UI/TipManager/TipPlacement.h"

#include "Classes/UI/TipManager/FrameChecker.h"
#include "Classes/UI/TipManager/TipView.h"

namespace zqcore::tip_placement {

namespace {

constexpr CGFloat kHorizontalInset = TipView::shadowHorizontalInset;
constexpr CGFloat kVerticalInset = TipView::shadowVerticalInset;

CGFloat alignedX(const CGRect& target, CGFloat width, const TipInfo& info) noexcept {
    switch (info.horizontalAlignment) {
        case TipHorizontalAlignment::left:
            return target.origin.x - kHorizontalInset;
        case TipHorizontalAlignment::right:
            return target.origin.x + target.size.width - width + kHorizontalInset;
        case TipHorizontalAlignment::center:
            break;
    }
    return target.origin.x + (target.size.width - width) * 0.5;
}

CGFloat alignedY(const CGRect& target, CGFloat height, const TipInfo& info) noexcept {
    switch (info.verticalAlignment) {
        case TipVerticalAlignment::top:
            return target.origin.y + target.size.height - height + kVerticalInset;
        case TipVerticalAlignment::bottom:
            return target.origin.y - kVerticalInset;
        case TipVerticalAlignment::center:
            break;
    }
    return target.origin.y + (target.size.height - height) * 0.5;
}

CGRect slidHorizontally(CGRect frame, const CGRect& visible, const FrameChecker::Result& out) noexcept {
    if (out.isLeftOut) {
        frame.origin.x = visible.origin.x;
    } else if (out.isRightOut) {
        frame.origin.x = visible.origin.x + visible.size.width - frame.size.width;
    }
    return frame;
}

CGRect slidVertically(CGRect frame, const CGRect& visible, const FrameChecker::Result& out) noexcept {
    if (out.isTopOut) {
        frame.origin.y = visible.origin.y + visible.size.height - frame.size.height;
    } else if (out.isBottomOut) {
        frame.origin.y = visible.origin.y;
    }
    return frame;
}

}  // namespace

CGRect calculateLocation(const CGRect& target, CGSize windowSize, const TipInfo& info,
                         TipLocation location) noexcept {
    const auto& [origin, size] = target;
    const auto& [width, height] = windowSize;
    CGPoint place;
    switch (location) {
        case TipLocation::top:
            place = {alignedX(target, width, info) + info.horizontalOffset,
                     origin.y + size.height - kVerticalInset + info.spacing};
            break;
        case TipLocation::bottom:
            place = {alignedX(target, width, info) + info.horizontalOffset,
                     origin.y - height + kVerticalInset - info.spacing};
            break;
        case TipLocation::left:
            place = {origin.x - width + kHorizontalInset - info.spacing,
                     alignedY(target, height, info) + info.verticalOffset};
            break;
        case TipLocation::right:
            place = {origin.x + size.width - kHorizontalInset + info.spacing,
                     alignedY(target, height, info) + info.verticalOffset};
            break;
    }
    return {place, windowSize};
}

CGRect fixedWindowFrame(const CGRect& target, CGSize windowSize, const TipInfo& info,
                        const CGRect& visibleFrame) noexcept {
    const CGRect frame = calculateLocation(target, windowSize, info, info.location);
    const auto out = FrameChecker::check(visibleFrame, frame);
    if (out.isAllInside()) return frame;
    const auto flipped = [&](TipLocation opposite) {
        return calculateLocation(target, windowSize, info, opposite);
    };
    switch (info.location) {
        case TipLocation::top:
            return out.isTopOut ? flipped(TipLocation::bottom) : slidHorizontally(frame, visibleFrame, out);
        case TipLocation::bottom:
            return out.isBottomOut ? flipped(TipLocation::top) : slidHorizontally(frame, visibleFrame, out);
        case TipLocation::left:
            return out.isLeftOut ? flipped(TipLocation::right) : slidVertically(frame, visibleFrame, out);
        case TipLocation::right:
            return out.isRightOut ? flipped(TipLocation::left) : slidVertically(frame, visibleFrame, out);
    }
    return frame;
}

}  // namespace zqcore::tip_placement
