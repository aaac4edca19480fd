// Which part of a shown tree looks other than it did when it was rendered last.
#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "Platform/Graphics/CGRect.h"
#include "Platform/QuartzCore/LayerRenderer.h"
#include "Platform/QuartzCore/LayerState.h"

namespace zqcore::platform {
namespace {

constexpr CGRect kEverywhere{{-1e7, -1e7}, {2e7, 2e7}};

bool isFinite(const CGRect& rect) {
    return std::isfinite(rect.origin.x + rect.origin.y + rect.size.width + rect.size.height);
}

/// Where the shadow of what covers `covered` may fall.
CGRect shadowOf(const CGRect& covered, const CALayer::Presentation& shown, const CGAffineTransform& toRoot) {
    const auto [dx, dy] = shown.shadowOffset;
    const CGFloat scale = std::max(std::hypot(toRoot.a, toRoot.b), std::hypot(toRoot.c, toRoot.d));
    // The blur is twice the sigma, of which three are to be seen.
    const CGFloat reach = 2 * std::max(0.0, shown.shadowRadius) * scale + 2;
    return CGRectInset(CGRectOffset(covered, toRoot.a * dx + toRoot.c * dy, toRoot.b * dx + toRoot.d * dy),
                       -reach, -reach);
}

}  // namespace

struct LayerRenderer::Damage {
    Clock::Instant now;
    CGRect area = CGRectNull();
    int parts = 0;
    // Drawn wholly or not at all: what throws a shadow, which all of the subtree does, and what lies aslant,
    // whose soft edges come out otherwise where the part's border cuts them.
    std::vector<CGRect> indivisible = {};

    void add(const CGRect& rect) {
        if (CGRectIsEmpty(rect)) return;
        area = isFinite(rect) ? CGRectUnion(area, rect) : kEverywhere;
        ++parts;
    }

    // Gives the rectangle of the root's superlayer that the subtree covers, shadows included, within `clip`.
    CGRect visit(CALayer& layer, const CGAffineTransform& outer, const CGRect& clip, bool moved) {
        CALayer::State& state = *layer.state_;
        const bool changed = moved || state.changed || layer.animationsEnd() > state.renderedAt;
        const bool below = state.needsRender || state.runningUntil > state.renderedAt;
        if (!changed && !below && !state.indivisible) return state.covered;
        state.renderedAt = now;
        const CGRect before = std::exchange(state.covered, CGRectNull());
        const int partsBefore = parts;
        add(std::exchange(state.uncovered, CGRectNull()));
        const bool wholly = !state.hidden && cover(layer, outer, clip, changed);
        if (changed || (wholly && parts > partsBefore)) {
            add(before);
            add(state.covered);
        }
        if (wholly) indivisible.push_back(state.covered);
        return state.covered;
    }

    // Finds what the subtree covers; true if the layer itself makes it indivisible.
    bool cover(CALayer& layer, const CGAffineTransform& outer, const CGRect& clip, bool moved) {
        CALayer::State& state = *layer.state_;
        const CALayer::Presentation shown = layer.presentationAt(now);
        const CGAffineTransform toRoot = CGAffineTransformConcat(toSuperlayer(layer, shown), outer);
        const bool masks = layer.masksToBounds();
        const bool shadow = !masks && shown.shadowOpacity > 0 && shown.shadowColor.alpha > 0;
        CGRect inner = shadow ? kEverywhere : clip;
        if (masks) inner = CGRectIntersection(inner, CGRectApplyAffineTransform(shown.bounds, toRoot));
        const CGRect own = CGRectApplyAffineTransform(layer.paintedRect(shown.bounds, now), toRoot);
        CGRect covered = CGRectIntersection(own, inner);
        const bool wholly = shadow || toRoot.b != 0 || toRoot.c != 0;
        state.indivisible = wholly;
        for (const auto& sublayer : state.sublayers) {
            covered = CGRectUnion(covered, visit(*sublayer, toRoot, inner, moved));
            state.indivisible = state.indivisible || sublayer->state_->indivisible;
        }
        if (shadow && !CGRectIsNull(covered))
            covered = CGRectIntersection(CGRectUnion(covered, shadowOf(covered, shown, toRoot)), clip);
        state.covered = covered;
        return wholly;
    }

    static CGAffineTransform toSuperlayer(const CALayer& layer, const CALayer::Presentation& shown) {
        const CGPoint anchor = layer.anchorPoint();
        const CGSize size = shown.bounds.size;
        CGAffineTransform way =
            CGAffineTransformMakeTranslation(-shown.bounds.origin.x, -shown.bounds.origin.y);
        if (layer.isGeometryFlipped()) way = CGAffineTransformConcat(way, {1, 0, 0, -1, 0, size.height});
        way.tx -= anchor.x * size.width;
        way.ty -= anchor.y * size.height;
        way = CGAffineTransformConcat(way, shown.affineTransform);
        way.tx += shown.position.x;
        way.ty += shown.position.y;
        return way;
    }
};

CGRect LayerRenderer::damage(CALayer& layer, Clock::Instant now) {
    Damage damage{.now = now};
    damage.visit(layer, CGAffineTransformIdentity, kEverywhere, false);
    // One that is touched is taken wholly, which may touch another.
    const auto touched = [&damage](const CGRect& whole) {
        if (CGRectIsEmpty(CGRectIntersection(damage.area, whole))) return false;
        damage.add(whole);
        return true;
    };
    while (std::erase_if(damage.indivisible, touched) > 0) {
    }
    return damage.area;
}

}  // namespace zqcore::platform
