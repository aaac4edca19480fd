#include <utility>

#include "Platform/QuartzCore/LayerState.h"

// The plain properties of a layer: each setter changes one value, under the terms of the moment.
namespace zqcore::platform {

CGColor CALayer::backgroundColor() const { return state_->backgroundColor.value(); }
bool CALayer::hasBackgroundColor() const { return state_->hasBackground; }
void CALayer::setBackgroundColor(const std::optional<CGColor>& color) {
    state_->hasBackground = color.has_value();
    const CGColor shown = color.value_or(CGColor::clear());
    if (shown == backgroundColor()) return;
    didChange(state_->backgroundColor.set(shown, termsOfChange()));
}

CGColor CALayer::borderColor() const { return state_->borderColor.value(); }
void CALayer::setBorderColor(const CGColor& color) {
    if (color == borderColor()) return;
    didChange(state_->borderColor.set(color, termsOfChange()));
}

CGFloat CALayer::borderWidth() const { return state_->borderWidth.value(); }
void CALayer::setBorderWidth(CGFloat width) {
    if (width == borderWidth()) return;
    didChange(state_->borderWidth.set(width, termsOfChange()));
}

CGFloat CALayer::cornerRadius() const { return state_->cornerRadius.value(); }
void CALayer::setCornerRadius(CGFloat radius) {
    if (radius == cornerRadius()) return;
    didChange(state_->cornerRadius.set(radius, termsOfChange()));
}

const std::string& CALayer::cornerCurve() const { return state_->cornerCurve; }
void CALayer::setCornerCurve(std::string_view curve) { state_->cornerCurve = curve; }

bool CALayer::masksToBounds() const { return state_->masksToBounds; }
void CALayer::setMasksToBounds(bool masks) {
    if (masks == state_->masksToBounds) return;
    state_->masksToBounds = masks;
    didChange();
}

CGFloat CALayer::opacity() const { return state_->opacity.value(); }
void CALayer::setOpacity(CGFloat opacity) {
    if (opacity == this->opacity()) return;
    didChange(state_->opacity.set(opacity, termsOfChange()));
}

bool CALayer::isHidden() const { return state_->hidden; }
void CALayer::setHidden(bool hidden) {
    if (hidden == state_->hidden) return;
    state_->hidden = hidden;
    didChange();
}

CGColor CALayer::shadowColor() const { return state_->shadowColor.value(); }
void CALayer::setShadowColor(const CGColor& color) {
    if (color == shadowColor()) return;
    didChange(state_->shadowColor.set(color, termsOfChange()));
}

CGFloat CALayer::shadowOpacity() const { return state_->shadowOpacity.value(); }
void CALayer::setShadowOpacity(CGFloat opacity) {
    if (opacity == shadowOpacity()) return;
    didChange(state_->shadowOpacity.set(opacity, termsOfChange()));
}

CGSize CALayer::shadowOffset() const { return state_->shadowOffset.value(); }
void CALayer::setShadowOffset(CGSize offset) {
    if (offset == shadowOffset()) return;
    didChange(state_->shadowOffset.set(offset, termsOfChange()));
}

CGFloat CALayer::shadowRadius() const { return state_->shadowRadius.value(); }
void CALayer::setShadowRadius(CGFloat radius) {
    if (radius == shadowRadius()) return;
    didChange(state_->shadowRadius.set(radius, termsOfChange()));
}

const std::vector<std::shared_ptr<CIFilter>>& CALayer::filters() const { return state_->filters; }
void CALayer::setFilters(std::vector<std::shared_ptr<CIFilter>> filters) {
    std::erase(filters, nullptr);
    state_->filters = std::move(filters);
    didChange();
}

CGRect autoresizedFrame(const CGRect& frame, CAAutoresizingMask mask, CGSize oldSize,
                        CGSize newSize) noexcept {
    // One axis: `flexible` has the bits for near margin, length and far margin.
    const auto resize = [](CGFloat& origin, CGFloat& length, unsigned flexible, CGFloat before,
                           CGFloat after) {
        const CGFloat parts[3] = {origin, length, before - origin - length};
        CGFloat sum = 0;
        int count = 0;
        for (int part = 0; part < 3; ++part) {
            if (((flexible >> part) & 1U) == 0) continue;
            sum += parts[part];
            ++count;
        }
        if (count == 0 || before == after) return;
        const auto share = [&](int part) {
            if (((flexible >> part) & 1U) == 0) return 0.0;
            return (after - before) * (count > 1 && sum > 0 ? parts[part] / sum : 1.0 / count);
        };
        origin += share(0);
        length += share(1);
    };
    CGRect result = frame;
    resize(result.origin.x, result.size.width, mask & 7U, oldSize.width, newSize.width);
    resize(result.origin.y, result.size.height, (mask >> 3U) & 7U, oldSize.height, newSize.height);
    return result;
}

}  // namespace zqcore::platform
