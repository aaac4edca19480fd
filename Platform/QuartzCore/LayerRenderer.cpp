#include "Platform/QuartzCore/LayerRenderer.h"

#include <cmath>

#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGImage.h"
#include "Platform/Graphics/CGPath.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/CIFilter.h"
#include "Platform/QuartzCore/LayerState.h"

namespace zqcore::platform {
namespace {

bool hasArea(const CGRect& rect) { return rect.size.width > 0 && rect.size.height > 0; }

CGFloat fittingRadius(const CGRect& rect, CGFloat radius) {
    return std::max(0.0, std::min(radius, std::min(rect.size.width, rect.size.height) / 2));
}

void fillRounded(CGContext& context, const CGRect& rect, CGFloat radius, const CGColor& color) {
    if (!(color.alpha > 0)) return;
    context.setFillColor(color);
    const CGFloat corner = fittingRadius(rect, radius);
    if (corner > 0) {
        context.fill(*CGPath::roundedRect(rect, corner, corner));
    } else {
        context.fill(rect);
    }
}

// The line's middle lies half its width inside, so that all of it is within the bounds.
void strokeInside(CGContext& context, const CGRect& bounds, CGFloat radius, CGFloat width,
                  const CGColor& color) {
    if (!(width > 0) || !(color.alpha > 0)) return;
    if (2 * width >= std::min(bounds.size.width, bounds.size.height)) {
        fillRounded(context, bounds, radius, color);
        return;
    }
    const CGRect middle = CGRectInset(bounds, width / 2, width / 2);
    const CGFloat corner = std::max(0.0, fittingRadius(bounds, radius) - width / 2);
    context.setStrokeColor(color);
    context.setLineWidth(width);
    context.setLineCap(CGLineCap::butt);
    context.setLineJoin(CGLineJoin::miter);
    context.stroke(*CGPath::roundedRect(middle, corner, corner));
}

}  // namespace

struct LayerRenderer::Walk {
    CGContext& context;
    Clock::Instant now;
    CGFloat scale;  // pixels a point of the root
    std::optional<CGRect> within = std::nullopt;

    void draw(CALayer& layer) const {
        const CALayer::State& state = *layer.state_;
        if (state.hidden || (within && CGRectIsEmpty(CGRectIntersection(*within, state.covered)))) return;
        const CALayer::Presentation shown = layer.presentationAt(now);
        if (!(shown.opacity > 0) || !isInvertible(shown.affineTransform)) return;
        layer.displayIfNeeded(scale);

        context.saveGState();
        enter(layer, shown);
        const std::optional<CGShadow> shadow = shadowOf(layer, shown);
        const bool outline = shadow && castsByOutline(layer, shown);
        const bool group = shown.opacity < 1 || (shadow && !outline);
        if (group)
            context.beginTransparencyLayer(std::min(shown.opacity, 1.0), outline ? std::nullopt : shadow);
        if (outline) {
            const CGFloat corner = fittingRadius(shown.bounds, shown.cornerRadius);
            context.drawShadow(*CGPath::roundedRect(shown.bounds, corner, corner), *shadow,
                               CGRectInset(shown.bounds, corner, corner));
        }
        if (layer.filters().empty()) {
            drawBody(layer, shown);
        } else {
            drawFiltered(layer, shown);
        }
        if (group) context.endTransparencyLayer();
        context.restoreGState();
    }

    // From the superlayer's space to the space of the bounds.
    void enter(const CALayer& layer, const CALayer::Presentation& shown) const {
        const CGPoint anchor = layer.anchorPoint();
        const CGSize size = shown.bounds.size;
        context.translateBy(shown.position.x, shown.position.y);
        if (shown.affineTransform != CGAffineTransformIdentity) context.concatenate(shown.affineTransform);
        context.translateBy(-anchor.x * size.width, -anchor.y * size.height);
        if (layer.isGeometryFlipped()) context.flip(size.height);
        context.translateBy(-shown.bounds.origin.x, -shown.bounds.origin.y);
    }

    static std::optional<CGShadow> shadowOf(const CALayer& layer, const CALayer::Presentation& shown) {
        const CGFloat alpha = shown.shadowColor.alpha * std::min(shown.shadowOpacity, 1.0);
        if (!(alpha > 0) || layer.masksToBounds()) return std::nullopt;
        return CGShadow{shown.shadowColor.withAlpha(alpha), shown.shadowOffset,
                        std::max(0.0, shown.shadowRadius)};
    }

    // Whether the shape that casts the shadow is the rounded rectangle itself: an opaque background that
    // nothing sticks out of. Then no group is needed.
    bool castsByOutline(const CALayer& layer, const CALayer::Presentation& shown) const {
        return hasArea(shown.bounds) && shown.backgroundColor.alpha >= 1 && staysInside(layer, shown);
    }

    bool staysInside(const CALayer& layer, const CALayer::Presentation& shown) const {
        if (layer.masksToBounds()) return true;
        const auto& sublayers = layer.sublayers();
        return std::all_of(sublayers.begin(), sublayers.end(), [&](const auto& sublayer) {
            return sublayer->isHidden() ||
                   CGRectContainsRect(shown.bounds, CGRectStandardize(sublayer->presentationAt(now).frame));
        });
    }

    // Filters work on pixels, so the body is drawn on those that it will cover, and they are put in place.
    void drawFiltered(CALayer& layer, const CALayer::Presentation& shown) const {
        const CGAffineTransform toPixels = context.ctm();
        CGRect area = context.clipBoundingBox();
        if (staysInside(layer, shown)) area = CGRectIntersection(area, CGRectStandardize(shown.bounds));
        if (!hasArea(area) || !isInvertible(toPixels)) return;
        const CGRect covered = CGRectIntegral(CGRectApplyAffineTransform(area, toPixels));
        area = CGRectApplyAffineTransform(covered, CGAffineTransformInvert(toPixels));
        const auto part = CGContext::bitmap(static_cast<std::int64_t>(covered.size.width),
                                            static_cast<std::int64_t>(covered.size.height));
        if (!part) return drawBody(layer, shown);
        part->scaleBy(covered.size.width / area.size.width, covered.size.height / area.size.height);
        if (context.isFlipped()) part->flip(area.size.height);
        part->translateBy(-area.origin.x, -area.origin.y);
        Walk{*part, now, scale}.drawBody(layer, shown);
        std::shared_ptr<const CGImage> image = part->makeImage();
        for (const auto& filter : layer.filters()) image = filter->apply(std::move(image));
        if (image) context.drawImage(*image, area);
    }

    void drawBody(CALayer& layer, const CALayer::Presentation& shown) const {
        const bool area = hasArea(shown.bounds);
        if (area) fillRounded(context, shown.bounds, shown.cornerRadius, shown.backgroundColor);
        if (layer.masksToBounds()) {
            if (!area) return;
            context.saveGState();
            const CGFloat corner = fittingRadius(shown.bounds, shown.cornerRadius);
            if (corner > 0) {
                context.clipTo(*CGPath::roundedRect(shown.bounds, corner, corner));
            } else {
                context.clipTo(shown.bounds);
            }
        }
        if (layer.hasContents()) layer.drawContents(context, shown.bounds, now);
        // A copy: a draw handler below may change the tree.
        const std::vector<std::shared_ptr<CALayer>> sublayers = layer.sublayers();
        for (const auto& sublayer : sublayers) draw(*sublayer);
        if (layer.masksToBounds()) context.restoreGState();
        if (area) {
            strokeInside(context, shown.bounds, shown.cornerRadius, shown.borderWidth, shown.borderColor);
        }
    }
};

void LayerRenderer::render(CALayer& layer, CGContext& context) {
    render(layer, context, Clock::current().now());
}

void LayerRenderer::render(CALayer& layer, CGContext& context, Clock::Instant now, const CGRect& part) {
    const CGAffineTransform toPixels = context.ctm();
    const CGFloat scale = std::hypot(toPixels.a, toPixels.b);
    Walk{context, now, scale > 0 ? scale : 1, part}.draw(layer);
}

void LayerRenderer::render(CALayer& layer, CGContext& context, Clock::Instant now) {
    const CGAffineTransform toPixels = context.ctm();
    const CGFloat scale = std::hypot(toPixels.a, toPixels.b);
    Walk{context, now, scale > 0 ? scale : 1}.draw(layer);
}

CGRect CALayer::paintedRect(const CGRect& bounds, Clock::Instant) const {
    return hasArea(bounds) ? bounds : CGRectNull();
}

void CALayer::drawContents(CGContext& context, const CGRect& bounds, Clock::Instant) {
    if (!hasArea(bounds)) return;
    if (state_->contents) context.drawImage(*state_->contents, bounds);
    if (state_->drawn) state_->drawn->replay(context, bounds);
}

}  // namespace zqcore::platform
