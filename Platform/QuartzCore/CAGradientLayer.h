#pragma once

#include <vector>

#include "Platform/QuartzCore/CALayer.h"

namespace zqcore::platform {

/// A layer filled, within its corner radius, by colours along a line; beyond both ends the end colours go on.
/// Changes show at once. Threads: main. Failure: none; without colours it is a plain layer.
class ZQ_EXPORT CAGradientLayer : public CALayer {
  public:
    [[nodiscard]] const std::vector<CGColor>& colors() const noexcept { return colors_; }
    void setColors(std::vector<CGColor> colors);
    /// Where each colour stands, rising from 0 to 1; empty (at first) spreads them evenly.
    [[nodiscard]] const std::vector<CGFloat>& locations() const noexcept { return locations_; }
    void setLocations(std::vector<CGFloat> locations);
    /// The ends of the line, in units of the bounds: from (0.5, 0) to (0.5, 1), which is upwards where y
    /// grows upwards.
    [[nodiscard]] CGPoint startPoint() const noexcept { return start_; }
    void setStartPoint(CGPoint point);
    [[nodiscard]] CGPoint endPoint() const noexcept { return end_; }
    void setEndPoint(CGPoint point);

  protected:
    void drawContents(CGContext& context, const CGRect& bounds, Clock::Instant now) override;
    [[nodiscard]] bool hasContents() const override;

  private:
    std::vector<CGColor> colors_;
    std::vector<CGFloat> locations_;
    CGPoint start_{0.5, 0};
    CGPoint end_{0.5, 1};
};

}  // namespace zqcore::platform
