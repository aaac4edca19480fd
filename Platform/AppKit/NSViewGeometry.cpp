#include <algorithm>
#include <ranges>
#include <utility>

#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/QuartzCore/CALayer.h"

namespace zqcore::platform {

void NSView::setFrame(const CGRect& frame) {
    if (frame == frame_) return;
    const CGSize oldSize = frame_.size;
    const bool sizeChanged = oldSize != frame.size;
    const auto held = weak_from_this().lock();
    frame_ = frame;
    applyLayerGeometry();
    if (!settingLayoutFrame_) frameDidChangeOutsideLayout();
    if (sizeChanged) {
        if (autoresizesSubviews_) resizeSubviewsWithOldSize(oldSize);
        needsLayout_ = true;
        needsDisplay_ = true;
    }
    markSubtreeTracking();
    post(frameNotice_, NSViewFrameDidChangeNotification);
    if (const auto above = superview_.lock()) above->subviewFrameDidChange(*this);
}

void NSView::setFrameSize(CGSize size) { setFrame({frame_.origin, size}); }

void NSView::setBoundsOrigin(CGPoint origin) {
    if (origin == boundsOrigin_) return;
    const auto held = weak_from_this().lock();
    boundsOrigin_ = origin;
    applyLayerGeometry();
    markSubtreeTracking();
    setNeedsDisplay(true);
    post(boundsNotice_, NSViewBoundsDidChangeNotification);
}

void NSView::setBounds(const CGRect& bounds) {
    setFrameSize(bounds.size);
    setBoundsOrigin(bounds.origin);
}

void NSView::resizeSubviewsWithOldSize(CGSize oldSize) {
    for (const auto& subview : std::vector(subviews_)) {
        // What constraints place isn't moved by masks as well.
        if (subview->autoresizingMask_ != NSViewNotSizable &&
            subview->translatesAutoresizingMaskIntoConstraints())
            subview->setFrame(
                autoresizedFrame(subview->frame_, subview->autoresizingMask_, oldSize, frame_.size));
    }
}

// The space above the outermost view is that of its window, which is never flipped.
CGPoint NSView::toParent(CGPoint point) const {
    const auto above = superview_.lock();
    const bool parentFlipped = above && above->isFlipped();
    const CGFloat y = point.y - boundsOrigin_.y;
    return {frame_.origin.x + point.x - boundsOrigin_.x,
            isFlipped() == parentFlipped ? frame_.origin.y + y : frame_.origin.y + frame_.size.height - y};
}

CGPoint NSView::fromParent(CGPoint point) const {
    const auto above = superview_.lock();
    const bool parentFlipped = above && above->isFlipped();
    const CGFloat y = isFlipped() == parentFlipped ? point.y - frame_.origin.y
                                                   : frame_.origin.y + frame_.size.height - point.y;
    return {point.x - frame_.origin.x + boundsOrigin_.x, y + boundsOrigin_.y};
}

CGPoint NSView::toWindow(CGPoint point) const {
    point = toParent(point);
    for (auto above = superview_.lock(); above; above = above->superview_.lock())
        point = above->toParent(point);
    return point;
}

CGPoint NSView::fromWindow(CGPoint point) const {
    if (const auto above = superview_.lock()) point = above->fromWindow(point);
    return fromParent(point);
}

CGPoint NSView::convertPointToView(CGPoint point, const std::shared_ptr<NSView>& view) const {
    const CGPoint inWindow = toWindow(point);
    return view ? view->fromWindow(inWindow) : inWindow;
}

CGPoint NSView::convertPointFromView(CGPoint point, const std::shared_ptr<NSView>& view) const {
    return fromWindow(view ? view->toWindow(point) : point);
}

CGRect NSView::convertRectToView(const CGRect& rect, const std::shared_ptr<NSView>& view) const {
    const CGPoint a = convertPointToView(rect.origin, view);
    const CGPoint b =
        convertPointToView({rect.origin.x + rect.size.width, rect.origin.y + rect.size.height}, view);
    return CGRectStandardize({a, {b.x - a.x, b.y - a.y}});
}

CGRect NSView::convertRectFromView(const CGRect& rect, const std::shared_ptr<NSView>& view) const {
    const CGPoint a = convertPointFromView(rect.origin, view);
    const CGPoint b =
        convertPointFromView({rect.origin.x + rect.size.width, rect.origin.y + rect.size.height}, view);
    return CGRectStandardize({a, {b.x - a.x, b.y - a.y}});
}

CGRect NSView::visibleRect() const {
    if (hidden_) return CGRectNull();
    CGRect visible = bounds();
    const NSView* view = this;
    std::shared_ptr<NSView> held;
    for (auto above = superview_.lock(); above; above = above->superview_.lock()) {
        if (above->hidden_) return CGRectNull();
        const CGPoint a = view->toParent(visible.origin);
        const CGPoint b = view->toParent({CGRectGetMaxX(visible), CGRectGetMaxY(visible)});
        visible = CGRectStandardize({a, {b.x - a.x, b.y - a.y}});
        if (above->clipsToBounds() || above->superview_.expired())
            visible = CGRectIntersection(visible, above->bounds());
        if (CGRectIsNull(visible)) return visible;
        held = above;
        view = held.get();
    }
    return held ? convertRectFromView(visible, held) : visible;
}

std::shared_ptr<NSView> NSView::hitTest(CGPoint point) {
    if (hidden_) return nullptr;
    if (const auto above = superview_.lock()) {
        if (!NSMouseInRect(point, frame_, above->isFlipped())) return nullptr;
    }
    const CGPoint inside = fromParent(point);
    const auto subviews = subviews_;
    for (const auto& subview : subviews | std::views::reverse) {
        if (auto hit = subview->hitTest(inside)) return hit;
    }
    return self();
}

bool NSView::mouseInRect(CGPoint point, const CGRect& rect) const {
    return NSMouseInRect(point, rect, isFlipped());
}

void NSView::post(Notice& notice, std::string_view name) {
    notice.missed = !notice.posts;
    if (!notice.posts) return;
    if (const auto held = weak_from_this().lock())
        NSNotificationCenter::defaultCenter().postNotificationName(name, held);
}

void NSView::setPostsFrameChangedNotifications(bool posts) {
    frameNotice_.posts = posts;
    if (posts && frameNotice_.missed) post(frameNotice_, NSViewFrameDidChangeNotification);
}

void NSView::setPostsBoundsChangedNotifications(bool posts) {
    boundsNotice_.posts = posts;
    if (posts && boundsNotice_.missed) post(boundsNotice_, NSViewBoundsDidChangeNotification);
}

}  // namespace zqcore::platform
