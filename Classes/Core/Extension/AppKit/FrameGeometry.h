#pragma once

#include <memory>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {
class NSView;
class NSWindow;
}  // namespace zqcore::platform

namespace zqcore {

/// The frame of a view by its edges, corners and centre. Writing moves the frame so that the value holds, its
/// size unchanged, unless the size itself is written.
///
///     geometry(*badge).setRight(geometry(*title).x() - 8);
///
/// `top` and `bottom` are what is seen: in a view whose own y grows downwards the top is its y.
/// Units: points of the superview. Threads: main thread. Lifetime: used at once; refers to the view.
class ZQ_EXPORT ViewGeometry final {
  public:
    explicit ViewGeometry(NSView& view) noexcept : view_(view) {}

    [[nodiscard]] CGFloat x() const;
    void setX(CGFloat x) const;
    [[nodiscard]] CGFloat y() const;
    void setY(CGFloat y) const;
    [[nodiscard]] CGFloat width() const;
    void setWidth(CGFloat width) const;
    [[nodiscard]] CGFloat height() const;
    void setHeight(CGFloat height) const;
    [[nodiscard]] CGPoint origin() const;
    void setOrigin(CGPoint origin) const;
    [[nodiscard]] CGSize size() const;
    void setSize(CGSize size) const;
    [[nodiscard]] CGFloat right() const;
    void setRight(CGFloat right) const;
    [[nodiscard]] CGFloat centerX() const;
    void setCenterX(CGFloat centerX) const;
    [[nodiscard]] CGFloat centerY() const;
    void setCenterY(CGFloat centerY) const;
    [[nodiscard]] CGPoint center() const;
    void setCenter(CGPoint center) const;
    [[nodiscard]] CGFloat top() const;
    void setTop(CGFloat top) const;
    [[nodiscard]] CGFloat bottom() const;
    void setBottom(CGFloat bottom) const;
    [[nodiscard]] CGPoint topLeft() const;
    void setTopLeft(CGPoint topLeft) const;
    [[nodiscard]] CGPoint leftBottom() const;
    void setLeftBottom(CGPoint leftBottom) const;
    [[nodiscard]] CGPoint bottomRight() const;
    void setBottomRight(CGPoint bottomRight) const;
    [[nodiscard]] CGPoint topRight() const;
    void setTopRight(CGPoint topRight) const;

  private:
    NSView& view_;
};

/// The same for a window, in screen space, where y grows upwards. Writing lays out and draws at once.
class ZQ_EXPORT WindowGeometry final {
  public:
    explicit WindowGeometry(NSWindow& window) noexcept : window_(window) {}

    [[nodiscard]] CGFloat x() const;
    void setX(CGFloat x) const;
    [[nodiscard]] CGFloat y() const;
    void setY(CGFloat y) const;
    [[nodiscard]] CGFloat width() const;
    void setWidth(CGFloat width) const;
    [[nodiscard]] CGFloat height() const;
    void setHeight(CGFloat height) const;
    [[nodiscard]] CGPoint origin() const;
    void setOrigin(CGPoint origin) const;
    [[nodiscard]] CGSize size() const;
    void setSize(CGSize size) const;
    [[nodiscard]] CGFloat top() const;
    void setTop(CGFloat top) const;
    [[nodiscard]] CGFloat right() const;
    void setRight(CGFloat right) const;
    [[nodiscard]] CGFloat centerX() const;
    void setCenterX(CGFloat centerX) const;
    [[nodiscard]] CGFloat centerY() const;
    void setCenterY(CGFloat centerY) const;
    [[nodiscard]] CGPoint centerPoint() const;
    void setCenterPoint(CGPoint centerPoint) const;
    [[nodiscard]] CGPoint topLeft() const;
    void setTopLeft(CGPoint topLeft) const;
    [[nodiscard]] CGPoint bottomRight() const;
    void setBottomRight(CGPoint bottomRight) const;
    [[nodiscard]] CGPoint topRight() const;
    void setTopRight(CGPoint topRight) const;

  private:
    NSWindow& window_;
};

[[nodiscard]] inline ViewGeometry geometry(NSView& view) noexcept { return ViewGeometry(view); }
[[nodiscard]] inline WindowGeometry geometry(NSWindow& window) noexcept { return WindowGeometry(window); }

}  // namespace zqcore
