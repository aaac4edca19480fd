#pragma once

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {
class NSView;
class NSWindow;
}  // namespace zqcore::platform

namespace zqcore {

/// A frame by its edges, corners and centre. Writing moves the frame so that the value holds, its size
/// unchanged, unless the size itself is written.
///
///     geometry(*badge).setRight(geometry(*title).x() - 8);
///
/// `top` is what is seen: where y grows downwards it is the y.
/// Units: points of whatever the frame lies in. Threads: main thread. Lifetime: used at once.
class ZQ_EXPORT FrameGeometry {
  public:
    [[nodiscard]] CGFloat x() const { return frame().origin.x; }
    void setX(CGFloat x) const { setOrigin({x, y()}); }
    [[nodiscard]] CGFloat y() const { return frame().origin.y; }
    void setY(CGFloat y) const { setOrigin({x(), y}); }
    [[nodiscard]] CGFloat width() const { return size().width; }
    void setWidth(CGFloat width) const { setSize({width, height()}); }
    [[nodiscard]] CGFloat height() const { return size().height; }
    void setHeight(CGFloat height) const { setSize({width(), height}); }
    [[nodiscard]] CGPoint origin() const { return frame().origin; }
    void setOrigin(CGPoint origin) const { setFrame({origin, size()}); }
    [[nodiscard]] CGSize size() const { return frame().size; }
    void setSize(CGSize size) const { setFrame({origin(), size}); }
    [[nodiscard]] CGFloat right() const { return x() + width(); }
    void setRight(CGFloat right) const { setX(right - width()); }
    [[nodiscard]] CGFloat centerX() const { return middle().x; }
    void setCenterX(CGFloat centerX) const { setX(centerX - width() * 0.5); }
    [[nodiscard]] CGFloat centerY() const { return middle().y; }
    void setCenterY(CGFloat centerY) const { setY(centerY - height() * 0.5); }
    [[nodiscard]] CGFloat top() const { return isFlipped() ? y() : y() + height(); }
    void setTop(CGFloat top) const { setY(yForTop(top)); }
    [[nodiscard]] CGPoint topLeft() const { return {x(), top()}; }
    void setTopLeft(CGPoint topLeft) const { setOrigin({topLeft.x, yForTop(topLeft.y)}); }
    [[nodiscard]] CGPoint bottomRight() const { return {right(), lowerEdge()}; }
    void setBottomRight(CGPoint corner) const { setOrigin({corner.x - width(), yForBottom(corner.y)}); }
    [[nodiscard]] CGPoint topRight() const { return {right(), top()}; }
    void setTopRight(CGPoint corner) const { setOrigin({corner.x - width(), yForTop(corner.y)}); }

  protected:
    FrameGeometry() = default;
    FrameGeometry(const FrameGeometry&) = default;
    FrameGeometry& operator=(const FrameGeometry&) = delete;
    ~FrameGeometry() = default;

    [[nodiscard]] virtual CGRect frame() const = 0;
    virtual void setFrame(const CGRect& frame) const = 0;
    [[nodiscard]] virtual bool isFlipped() const { return false; }

    [[nodiscard]] CGPoint middle() const;
    void setMiddle(CGPoint middle) const;
    [[nodiscard]] CGFloat lowerEdge() const { return isFlipped() ? y() + height() : y(); }
    [[nodiscard]] CGFloat yForTop(CGFloat top) const { return isFlipped() ? top : top - height(); }
    [[nodiscard]] CGFloat yForBottom(CGFloat bottom) const {
        return isFlipped() ? bottom - height() : bottom;
    }
};

/// Of a view, in the space of its superview; in a view whose own y grows downwards the top is its y.
class ZQ_EXPORT ViewGeometry final : public FrameGeometry {
  public:
    explicit ViewGeometry(NSView& view) noexcept : view_(view) {}

    [[nodiscard]] CGPoint center() const { return middle(); }
    void setCenter(CGPoint center) const { setMiddle(center); }
    [[nodiscard]] CGFloat bottom() const { return lowerEdge(); }
    void setBottom(CGFloat bottom) const { setY(yForBottom(bottom)); }
    [[nodiscard]] CGPoint leftBottom() const { return {x(), bottom()}; }
    void setLeftBottom(CGPoint corner) const { setOrigin({corner.x, yForBottom(corner.y)}); }

  private:
    [[nodiscard]] CGRect frame() const override;
    void setFrame(const CGRect& frame) const override;
    [[nodiscard]] bool isFlipped() const override;

    NSView& view_;
};

/// Of a window, in screen space, where y grows upwards. Writing lays out and draws at once.
class ZQ_EXPORT WindowGeometry final : public FrameGeometry {
  public:
    explicit WindowGeometry(NSWindow& window) noexcept : window_(window) {}

    [[nodiscard]] CGPoint centerPoint() const { return middle(); }
    void setCenterPoint(CGPoint centerPoint) const { setMiddle(centerPoint); }

  private:
    [[nodiscard]] CGRect frame() const override;
    void setFrame(const CGRect& frame) const override;

    NSWindow& window_;
};

[[nodiscard]] inline ViewGeometry geometry(NSView& view) noexcept { return ViewGeometry(view); }
[[nodiscard]] inline WindowGeometry geometry(NSWindow& window) noexcept { return WindowGeometry(window); }

}  // namespace zqcore
