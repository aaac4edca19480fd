#pragma once

#include <array>
#include <memory>
#include <vector>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"
#include "Platform/Graphics/CGAffineTransform.h"

namespace zqcore::platform {

/// Lines and curves, in points. Held by shared_ptr; who shares a path no longer adds to it.
/// Angles: radians, counter-clockwise from the x axis where y grows upwards; in a flipped space the same
/// numbers look mirrored.
/// Threads: one at a time while it is built, then any.
/// Failure: none; a line or curve without a current point starts one at its first point.
class ZQ_EXPORT CGPath final {
  public:
    enum class ElementKind { moveTo, lineTo, curveTo, closeSubpath };
    struct Element {
        ElementKind kind = ElementKind::moveTo;
        /// One point for `moveTo` and `lineTo`, two control points and the end for `curveTo`.
        std::array<CGPoint, 3> points{};
        friend bool operator==(const Element&, const Element&) = default;
    };

    [[nodiscard]] static std::shared_ptr<CGPath> make() { return std::make_shared<CGPath>(); }
    [[nodiscard]] static std::shared_ptr<CGPath> rect(const CGRect& rect);
    [[nodiscard]] static std::shared_ptr<CGPath> roundedRect(const CGRect& rect, CGFloat radiusX,
                                                             CGFloat radiusY);
    [[nodiscard]] static std::shared_ptr<CGPath> ellipse(const CGRect& in);

    void moveTo(CGPoint point);
    void lineTo(CGPoint point);
    void curveTo(CGPoint control1, CGPoint control2, CGPoint end);
    /// A line back to the start of the subpath, which is then the current point.
    void close();
    void addRect(const CGRect& rect);
    /// Radii are cut to half of the side; without radius it is a plain rectangle.
    void addRoundedRect(const CGRect& rect, CGFloat radiusX, CGFloat radiusY);
    void addEllipse(const CGRect& in);
    /// An arc from angle `start` to `end`, never more than one full turn; a line leads to its start if there
    /// is a current point. Clockwise decreases the angle: pi/2 to -3 pi/2 clockwise is one turn from the top.
    void addArc(CGPoint center, CGFloat radius, CGFloat start, CGFloat end, bool clockwise);
    void addPath(const CGPath& path, const CGAffineTransform& transform = CGAffineTransformIdentity);

    [[nodiscard]] bool isEmpty() const noexcept { return elements_.empty(); }
    [[nodiscard]] CGPoint currentPoint() const noexcept { return current_; }
    [[nodiscard]] const std::vector<Element>& elements() const noexcept { return elements_; }
    /// The rectangle round all points, control points included; the null rectangle of an empty path.
    [[nodiscard]] CGRect boundingBox() const noexcept;

  private:
    std::vector<Element> elements_;
    CGPoint current_{};
    CGPoint start_{};
};

}  // namespace zqcore::platform
