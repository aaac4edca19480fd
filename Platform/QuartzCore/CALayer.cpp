#include "Platform/QuartzCore/CALayer.h"

#include <algorithm>
#include <utility>

#include "Platform/QuartzCore/LayerState.h"

namespace zqcore::platform {
namespace {

// The rectangle of `size` round the anchor, as the superlayer sees it.
CGRect placed(CGPoint position, CGSize size, CGPoint anchor, const CGAffineTransform& transform) {
    const CGRect box{{-anchor.x * size.width, -anchor.y * size.height}, size};
    CGRect result = box;
    if (transform != CGAffineTransformIdentity) result = CGRectApplyAffineTransform(box, transform);
    return {{result.origin.x + position.x, result.origin.y + position.y}, result.size};
}

}  // namespace

CALayer::CALayer() : state_(std::make_unique<State>()) {}

CALayer::~CALayer() {
    for (const auto& sublayer : state_->sublayers) sublayer->state_->superlayer = nullptr;
}

// Geometry

CGRect CALayer::frame() const { return placed(position(), bounds().size, anchorPoint(), affineTransform()); }

void CALayer::setFrame(const CGRect& frame) {
    if (frame == this->frame()) return;
    didChange(applyFrame(frame, termsOfChange()));
}

Clock::Instant CALayer::applyFrame(const CGRect& frame, const std::optional<CAAnimationTerms>& terms) {
    CGSize size = frame.size;
    const CGAffineTransform transform = affineTransform();
    if (transform != CGAffineTransformIdentity && isInvertible(transform)) {
        size = CGRectApplyAffineTransform({{}, size}, CGAffineTransformInvert(transform)).size;
    }
    const CGRect around = placed({}, size, anchorPoint(), transform);
    const CGPoint position{frame.origin.x - around.origin.x, frame.origin.y - around.origin.y};
    const Clock::Instant moved = state_->position.set(position, terms);
    return std::max(moved, applyBounds({bounds().origin, size}, terms));
}

CGRect CALayer::bounds() const { return state_->bounds.value(); }

void CALayer::setBounds(const CGRect& bounds) {
    if (bounds == this->bounds()) return;
    didChange(applyBounds(bounds, termsOfChange()));
}

Clock::Instant CALayer::applyBounds(const CGRect& bounds, const std::optional<CAAnimationTerms>& terms) {
    const CGSize oldSize = this->bounds().size;
    const Clock::Instant end = state_->bounds.set(bounds, terms);
    if (oldSize != bounds.size) resizeSublayers(oldSize, terms);
    return end;
}

void CALayer::resizeSublayers(CGSize oldSize, const std::optional<CAAnimationTerms>& terms) {
    const CGSize newSize = bounds().size;
    for (const auto& sublayer : state_->sublayers) {
        if (sublayer->autoresizingMask() == 0) continue;
        const CGRect frame =
            autoresizedFrame(sublayer->frame(), sublayer->autoresizingMask(), oldSize, newSize);
        if (frame != sublayer->frame()) sublayer->didChange(sublayer->applyFrame(frame, terms));
    }
}

CGPoint CALayer::position() const { return state_->position.value(); }

void CALayer::setPosition(CGPoint position) {
    if (position == this->position()) return;
    didChange(state_->position.set(position, termsOfChange()));
}

CGPoint CALayer::anchorPoint() const { return state_->anchorPoint; }

void CALayer::setAnchorPoint(CGPoint anchorPoint) {
    if (anchorPoint == state_->anchorPoint) return;
    state_->anchorPoint = anchorPoint;
    didChange();
}

CGAffineTransform CALayer::affineTransform() const { return state_->transform.value(); }

void CALayer::setAffineTransform(const CGAffineTransform& transform) {
    if (transform == affineTransform()) return;
    didChange(state_->transform.set(transform, termsOfChange()));
}

bool CALayer::isGeometryFlipped() const { return state_->geometryFlipped; }

void CALayer::setGeometryFlipped(bool flipped) {
    if (flipped == state_->geometryFlipped) return;
    state_->geometryFlipped = flipped;
    setNeedsDisplay();
}

bool CALayer::contentsAreFlipped() const {
    bool flipped = false;
    for (const CALayer* layer = this; layer; layer = layer->state_->superlayer) {
        flipped ^= layer->state_->geometryFlipped;
    }
    return flipped;
}

CAAutoresizingMask CALayer::autoresizingMask() const { return state_->autoresizingMask; }

void CALayer::setAutoresizingMask(CAAutoresizingMask mask) { state_->autoresizingMask = mask; }

// The tree

std::shared_ptr<CALayer> CALayer::superlayer() const {
    if (!state_->superlayer) return nullptr;
    return std::static_pointer_cast<CALayer>(state_->superlayer->weak_from_this().lock());
}

const std::vector<std::shared_ptr<CALayer>>& CALayer::sublayers() const { return state_->sublayers; }

void CALayer::addSublayer(const std::shared_ptr<CALayer>& layer) {
    insertSublayer(layer, state_->sublayers.size());
}

void CALayer::insertSublayer(const std::shared_ptr<CALayer>& layer, std::size_t index) {
    if (!layer) return;
    for (const CALayer* above = this; above; above = above->state_->superlayer) {
        if (above == layer.get()) return;
    }
    std::shared_ptr<CALayer> kept = layer;  // `layer` may be an element of a list that changes below
    CALayer& added = *kept;
    added.removeFromSuperlayer();
    auto& sublayers = state_->sublayers;
    sublayers.insert(sublayers.begin() + static_cast<std::ptrdiff_t>(std::min(index, sublayers.size())),
                     std::move(kept));
    added.state_->superlayer = this;
    added.state_->changed = added.state_->needsRender = true;
    tellChange(added.state_->runningUntil);
}

void CALayer::removeFromSuperlayer() {
    CALayer* const above = state_->superlayer;
    if (!above) return;
    auto& siblings = above->state_->sublayers;
    const auto place = std::find_if(siblings.begin(), siblings.end(),
                                    [this](const auto& sibling) { return sibling.get() == this; });
    state_->superlayer = nullptr;
    const std::shared_ptr<CALayer> kept = std::move(*place);
    siblings.erase(place);
    above->state_->uncovered =
        CGRectUnion(above->state_->uncovered, std::exchange(state_->covered, CGRectNull()));
    above->tellChange({});
}

void CALayer::reorderSublayers(const std::vector<std::shared_ptr<CALayer>>& order) {
    if (order == state_->sublayers) return;
    if (!std::is_permutation(order.begin(), order.end(), state_->sublayers.begin(),
                             state_->sublayers.end())) {
        return;
    }
    state_->sublayers = order;
    for (const auto& sublayer : order) sublayer->state_->changed = sublayer->state_->needsRender = true;
    tellChange({});
}

const CALayer& CALayer::root() const {
    const CALayer* layer = this;
    while (layer->state_->superlayer) layer = layer->state_->superlayer;
    return *layer;
}

// Contents

const std::shared_ptr<const CGImage>& CALayer::contents() const { return state_->contents; }

void CALayer::setContents(std::shared_ptr<const CGImage> contents) {
    if (contents == state_->contents) return;
    state_->contents = std::move(contents);
    didChange();
}

void CALayer::setDrawHandler(std::function<void(CGContext&)> draw) {
    state_->draw = std::move(draw);
    state_->drawn.reset();
    setNeedsDisplay();
}

void CALayer::setNeedsDisplay() {
    state_->needsDisplay = true;
    didChange();
}

bool CALayer::needsDisplay() const { return state_->needsDisplay && state_->draw; }

void CALayer::displayIfNeeded(CGFloat scale) {
    if (!needsDisplay()) return;
    state_->needsDisplay = false;  // first: drawing may ask for the next one
    const std::function<void(CGContext&)> draw = state_->draw;
    state_->drawn = std::make_unique<LayerRecording>(bounds(), contentsAreFlipped(), scale, draw);
}

bool CALayer::hasContents() const { return state_->contents || state_->drawn; }

// Animation

void CALayer::setActionPolicy(ActionPolicy policy) { state_->policy = std::move(policy); }

std::optional<CAAnimationTerms> CALayer::termsOfChange() {
    if (CATransaction::disableActions()) return std::nullopt;
    if (state_->policy) return state_->policy(*this);
    // Nobody sees what moves outside of a window.
    if (!root().state_->treeChanged) return std::nullopt;
    return CATransaction::animationTerms();
}

CALayer::Presentation CALayer::presentation() const { return presentationAt(Clock::current().now()); }

CALayer::Presentation CALayer::presentationAt(Clock::Instant now) const {
    Presentation shown;
    const State& state = *state_;
    shown.position = state.position.shownAt(now);
    shown.bounds = state.bounds.shownAt(now);
    shown.affineTransform = state.transform.shownAt(now);
    shown.opacity = state.opacity.shownAt(now);
    shown.backgroundColor = state.backgroundColor.shownAt(now);
    shown.borderColor = state.borderColor.shownAt(now);
    shown.shadowColor = state.shadowColor.shownAt(now);
    shown.borderWidth = state.borderWidth.shownAt(now);
    shown.cornerRadius = state.cornerRadius.shownAt(now);
    shown.shadowOpacity = state.shadowOpacity.shownAt(now);
    shown.shadowRadius = state.shadowRadius.shownAt(now);
    shown.shadowOffset = state.shadowOffset.shownAt(now);
    shown.frame = placed(shown.position, shown.bounds.size, anchorPoint(), shown.affineTransform);
    return shown;
}

void CALayer::removeAllAnimations() {
    state_->forEachAnimated([](auto& value) { value.stop(); });
    didChange();
}

Clock::Instant CALayer::animationsEnd() const {
    Clock::Instant end;
    state_->forEachAnimated([&end](const auto& value) { end = std::max(end, value.end()); });
    return end;
}

bool CALayer::hasRunningAnimations() const {
    const Clock::Instant now = Clock::current().now();
    // The remembered time is only a limit: what was replaced or removed may have ended earlier.
    if (state_->runningUntil <= now) return false;
    if (animationsEnd() > now) return true;
    return std::any_of(state_->sublayers.begin(), state_->sublayers.end(),
                       [](const auto& sublayer) { return sublayer->hasRunningAnimations(); });
}

void CALayer::didChange(Clock::Instant end) {
    state_->changed = true;
    tellChange(end);
}

void CALayer::tellChange(Clock::Instant end) {
    for (CALayer* layer = this; layer; layer = layer->state_->superlayer) {
        State& state = *layer->state_;
        if (state.needsRender && state.runningUntil >= end) return;
        state.runningUntil = std::max(state.runningUntil, end);
        if (!std::exchange(state.needsRender, true) && state.treeChanged) state.treeChanged();
    }
}

void CALayer::setTreeChangeHandler(std::function<void()> changed) {
    state_->treeChanged = std::move(changed);
}

bool CALayer::needsRender() const { return state_->needsRender; }

void CALayer::markRendered() {
    if (!std::exchange(state_->needsRender, false)) return;
    state_->changed = false;
    for (const auto& sublayer : state_->sublayers) sublayer->markRendered();
}

}  // namespace zqcore::platform
