#pragma once

#include <memory>

#include "Platform/Graphics/CGContext.h"
#include "Platform/QuartzCore/CALayer.h"

namespace zqcore::platform {

class CGPath;

using CAShapeLayerLineCap = CGLineCap;
inline constexpr CAShapeLayerLineCap kCALineCapButt = CGLineCap::butt;
inline constexpr CAShapeLayerLineCap kCALineCapRound = CGLineCap::round;
inline constexpr CAShapeLayerLineCap kCALineCapSquare = CGLineCap::square;

/// A layer that draws one path in the space of its bounds, not cut off by them: filled opaque black, without
/// stroke, line width 1 and butt caps until told otherwise. The path changes at once; all else may run.
/// Threads: main. Failure: none; without path nothing is drawn.
class ZQ_EXPORT CAShapeLayer : public CALayer {
  public:
    CAShapeLayer();
    ~CAShapeLayer() override;

    [[nodiscard]] const std::shared_ptr<const CGPath>& path() const;
    void setPath(std::shared_ptr<const CGPath> path);
    [[nodiscard]] CGColor fillColor() const;
    void setFillColor(const CGColor& color);
    [[nodiscard]] CGColor strokeColor() const;
    void setStrokeColor(const CGColor& color);
    [[nodiscard]] CGFloat lineWidth() const;
    void setLineWidth(CGFloat width);
    [[nodiscard]] CAShapeLayerLineCap lineCap() const;
    void setLineCap(CAShapeLayerLineCap cap);
    /// Where the stroke begins and ends, as fractions of the path's length; what lies outside 0...1 is drawn
    /// as the nearer end. An empty part draws nothing, caps neither.
    [[nodiscard]] CGFloat strokeStart() const;
    void setStrokeStart(CGFloat fraction);
    [[nodiscard]] CGFloat strokeEnd() const;
    void setStrokeEnd(CGFloat fraction);

    /// The stroked part as it shows now.
    struct StrokePart {
        CGFloat start = 0;
        CGFloat end = 1;
    };
    [[nodiscard]] StrokePart presentationStroke() const;
    void removeAllAnimations() override;

  protected:
    void drawContents(CGContext& context, const CGRect& bounds, Clock::Instant now) override;
    [[nodiscard]] CGRect paintedRect(const CGRect& bounds, Clock::Instant now) const override;
    [[nodiscard]] bool hasContents() const override;
    [[nodiscard]] Clock::Instant animationsEnd() const override;

  private:
    struct Shape;
    std::unique_ptr<Shape> shape_;
};

}  // namespace zqcore::platform
