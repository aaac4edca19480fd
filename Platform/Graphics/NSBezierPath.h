#pragma once

#include <memory>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"
#include "Platform/Graphics/CGPath.h"

namespace zqcore::platform {

/// A path that draws itself on the current graphics context in its colours; without one nothing happens.
/// Lengths in points. Threads: one at a time.
class ZQ_EXPORT NSBezierPath final : public NSObject {
  public:
    [[nodiscard]] static std::shared_ptr<NSBezierPath> bezierPath();
    [[nodiscard]] static std::shared_ptr<NSBezierPath> bezierPathWithRect(const CGRect& rect);
    [[nodiscard]] static std::shared_ptr<NSBezierPath> bezierPathWithRoundedRect(const CGRect& rect,
                                                                                 CGFloat xRadius,
                                                                                 CGFloat yRadius);
    [[nodiscard]] static std::shared_ptr<NSBezierPath> bezierPathWithOvalInRect(const CGRect& rect);

    void moveToPoint(CGPoint point) { path_->moveTo(point); }
    void lineToPoint(CGPoint point) { path_->lineTo(point); }
    void curveToPoint(CGPoint end, CGPoint control1, CGPoint control2) {
        path_->curveTo(control1, control2, end);
    }
    void closePath() { path_->close(); }

    [[nodiscard]] CGFloat lineWidth() const noexcept { return lineWidth_; }
    void setLineWidth(CGFloat width) noexcept { lineWidth_ = width; }

    void fill() const;
    void stroke() const;
    /// Cuts what the current context draws from now on to the path.
    void addClip() const;

    [[nodiscard]] const std::shared_ptr<CGPath>& cgPath() const noexcept { return path_; }

  private:
    template <class T, class... Arguments>
    friend std::shared_ptr<T> makeObject(Arguments&&...);
    explicit NSBezierPath(std::shared_ptr<CGPath> path) noexcept : path_(std::move(path)) {}

    std::shared_ptr<CGPath> path_;
    CGFloat lineWidth_ = 1;
};

}  // namespace zqcore::platform
