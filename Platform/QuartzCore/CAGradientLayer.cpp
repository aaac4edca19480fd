#include "Platform/QuartzCore/CAGradientLayer.h"

#include <algorithm>
#include <utility>

#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGPath.h"

namespace zqcore::platform {

void CAGradientLayer::setColors(std::vector<CGColor> colors) {
    if (colors == colors_) return;
    colors_ = std::move(colors);
    didChange();
}

void CAGradientLayer::setLocations(std::vector<CGFloat> locations) {
    if (locations == locations_) return;
    locations_ = std::move(locations);
    didChange();
}

void CAGradientLayer::setStartPoint(CGPoint point) {
    if (point == std::exchange(start_, point)) return;
    didChange();
}

void CAGradientLayer::setEndPoint(CGPoint point) {
    if (point == std::exchange(end_, point)) return;
    didChange();
}

bool CAGradientLayer::hasContents() const { return !colors_.empty() || CALayer::hasContents(); }

void CAGradientLayer::drawContents(CGContext& context, const CGRect& bounds, Clock::Instant now) {
    if (!colors_.empty() && bounds.size.width > 0 && bounds.size.height > 0) {
        const auto inBounds = [&bounds](CGPoint unit) -> CGPoint {
            return {bounds.origin.x + unit.x * bounds.size.width,
                    bounds.origin.y + unit.y * bounds.size.height};
        };
        const CGFloat half = std::min(bounds.size.width, bounds.size.height) / 2;
        const CGFloat corner = std::clamp(presentation().cornerRadius, 0.0, half);
        context.saveGState();
        context.clipTo(*CGPath::roundedRect(bounds, corner, corner));
        context.drawLinearGradient(colors_, locations_, inBounds(start_), inBounds(end_));
        context.restoreGState();
    }
    CALayer::drawContents(context, bounds, now);
}

}  // namespace zqcore::platform
