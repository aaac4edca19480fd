#include "Classes/Core/Extension/AppKit/FrameGeometry.h"

#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Graphics/CGRect.h"

namespace zqcore {

namespace {

void place(NSView& view, const CGRect& frame) { view.setFrame(frame); }
void place(NSWindow& window, const CGRect& frame) { window.setFrame(frame, true); }

template <class Owner>
void moveTo(Owner& owner, CGPoint origin) {
    place(owner, {origin, owner.frame().size});
}
template <class Owner>
void moveToX(Owner& owner, CGFloat x) {
    moveTo(owner, {x, owner.frame().origin.y});
}
template <class Owner>
void moveToY(Owner& owner, CGFloat y) {
    moveTo(owner, {owner.frame().origin.x, y});
}
template <class Owner>
void resizeTo(Owner& owner, CGSize size) {
    place(owner, {owner.frame().origin, size});
}

CGFloat maxX(const CGRect& frame) { return frame.origin.x + frame.size.width; }
CGFloat maxY(const CGRect& frame) { return frame.origin.y + frame.size.height; }

CGFloat yForTop(const NSView& view, CGFloat top) {
    return view.isFlipped() ? top : top - view.frame().size.height;
}
CGFloat yForBottom(const NSView& view, CGFloat bottom) {
    return view.isFlipped() ? bottom - view.frame().size.height : bottom;
}

}  // namespace

CGFloat ViewGeometry::x() const { return view_.frame().origin.x; }
void ViewGeometry::setX(CGFloat x) const { moveToX(view_, x); }
CGFloat ViewGeometry::y() const { return view_.frame().origin.y; }
void ViewGeometry::setY(CGFloat y) const { moveToY(view_, y); }
CGFloat ViewGeometry::width() const { return view_.frame().size.width; }
void ViewGeometry::setWidth(CGFloat width) const { resizeTo(view_, {width, height()}); }
CGFloat ViewGeometry::height() const { return view_.frame().size.height; }
void ViewGeometry::setHeight(CGFloat height) const { resizeTo(view_, {width(), height}); }
CGPoint ViewGeometry::origin() const { return view_.frame().origin; }
void ViewGeometry::setOrigin(CGPoint origin) const { moveTo(view_, origin); }
CGSize ViewGeometry::size() const { return view_.frame().size; }
void ViewGeometry::setSize(CGSize size) const { resizeTo(view_, size); }
CGFloat ViewGeometry::right() const { return maxX(view_.frame()); }
void ViewGeometry::setRight(CGFloat right) const { moveToX(view_, right - width()); }
CGFloat ViewGeometry::centerX() const { return CGRectGetMidX(view_.frame()); }
void ViewGeometry::setCenterX(CGFloat centerX) const { moveToX(view_, centerX - width() * 0.5); }
CGFloat ViewGeometry::centerY() const { return CGRectGetMidY(view_.frame()); }
void ViewGeometry::setCenterY(CGFloat centerY) const { moveToY(view_, centerY - height() * 0.5); }
CGPoint ViewGeometry::center() const { return {centerX(), centerY()}; }
void ViewGeometry::setCenter(CGPoint center) const {
    moveTo(view_, {center.x - width() * 0.5, center.y - height() * 0.5});
}
CGFloat ViewGeometry::top() const { return view_.isFlipped() ? y() : maxY(view_.frame()); }
void ViewGeometry::setTop(CGFloat top) const { moveToY(view_, yForTop(view_, top)); }
CGFloat ViewGeometry::bottom() const { return view_.isFlipped() ? maxY(view_.frame()) : y(); }
void ViewGeometry::setBottom(CGFloat bottom) const { moveToY(view_, yForBottom(view_, bottom)); }
CGPoint ViewGeometry::topLeft() const { return {x(), top()}; }
void ViewGeometry::setTopLeft(CGPoint topLeft) const {
    moveTo(view_, {topLeft.x, yForTop(view_, topLeft.y)});
}
CGPoint ViewGeometry::leftBottom() const { return {x(), bottom()}; }
void ViewGeometry::setLeftBottom(CGPoint leftBottom) const {
    moveTo(view_, {leftBottom.x, yForBottom(view_, leftBottom.y)});
}
CGPoint ViewGeometry::bottomRight() const { return {right(), bottom()}; }
void ViewGeometry::setBottomRight(CGPoint bottomRight) const {
    moveTo(view_, {bottomRight.x - width(), yForBottom(view_, bottomRight.y)});
}
CGPoint ViewGeometry::topRight() const { return {right(), top()}; }
void ViewGeometry::setTopRight(CGPoint topRight) const {
    moveTo(view_, {topRight.x - width(), yForTop(view_, topRight.y)});
}

CGFloat WindowGeometry::x() const { return window_.frame().origin.x; }
void WindowGeometry::setX(CGFloat x) const { moveToX(window_, x); }
CGFloat WindowGeometry::y() const { return window_.frame().origin.y; }
void WindowGeometry::setY(CGFloat y) const { moveToY(window_, y); }
CGFloat WindowGeometry::width() const { return window_.frame().size.width; }
void WindowGeometry::setWidth(CGFloat width) const { resizeTo(window_, {width, height()}); }
CGFloat WindowGeometry::height() const { return window_.frame().size.height; }
void WindowGeometry::setHeight(CGFloat height) const { resizeTo(window_, {width(), height}); }
CGPoint WindowGeometry::origin() const { return window_.frame().origin; }
void WindowGeometry::setOrigin(CGPoint origin) const { moveTo(window_, origin); }
CGSize WindowGeometry::size() const { return window_.frame().size; }
void WindowGeometry::setSize(CGSize size) const { resizeTo(window_, size); }
CGFloat WindowGeometry::top() const { return maxY(window_.frame()); }
void WindowGeometry::setTop(CGFloat top) const { moveToY(window_, top - height()); }
CGFloat WindowGeometry::right() const { return maxX(window_.frame()); }
void WindowGeometry::setRight(CGFloat right) const { moveToX(window_, right - width()); }
CGFloat WindowGeometry::centerX() const { return CGRectGetMidX(window_.frame()); }
void WindowGeometry::setCenterX(CGFloat centerX) const { moveToX(window_, centerX - width() * 0.5); }
CGFloat WindowGeometry::centerY() const { return CGRectGetMidY(window_.frame()); }
void WindowGeometry::setCenterY(CGFloat centerY) const { moveToY(window_, centerY - height() * 0.5); }
CGPoint WindowGeometry::centerPoint() const { return {centerX(), centerY()}; }
void WindowGeometry::setCenterPoint(CGPoint centerPoint) const {
    moveTo(window_, {centerPoint.x - width() * 0.5, centerPoint.y - height() * 0.5});
}
CGPoint WindowGeometry::topLeft() const { return {x(), top()}; }
void WindowGeometry::setTopLeft(CGPoint topLeft) const { moveTo(window_, {topLeft.x, topLeft.y - height()}); }
CGPoint WindowGeometry::bottomRight() const { return {right(), y()}; }
void WindowGeometry::setBottomRight(CGPoint bottomRight) const {
    moveTo(window_, {bottomRight.x - width(), bottomRight.y});
}
CGPoint WindowGeometry::topRight() const { return {right(), top()}; }
void WindowGeometry::setTopRight(CGPoint topRight) const {
    moveTo(window_, {topRight.x - width(), topRight.y - height()});
}

}  // namespace zqcore
