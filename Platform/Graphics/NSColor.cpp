#include "Platform/Graphics/NSColor.h"

#include <cstdio>
#include <utility>

#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/NSAppearance.h"
#include "Platform/Graphics/NSGraphicsContext.h"

namespace zqcore::platform {

namespace {

CGFloat component(CGFloat value) { return value > 0 ? (value < 1 ? value : 1) : 0; }

CGColor cut(const CGColor& color) {
    return {component(color.red), component(color.green), component(color.blue), component(color.alpha)};
}

NSColor::Shared dynamic(const CGColor& light, const CGColor& dark) {
    return NSColor::colorWithProvider(
        [light, dark](const NSAppearance& appearance) { return appearance.isDark() ? dark : light; });
}

constexpr CGColor byte(int rgb) {
    return CGColor::rgb(((rgb >> 16) & 0xff) / 255.0, ((rgb >> 8) & 0xff) / 255.0, (rgb & 0xff) / 255.0);
}

}  // namespace

NSColor::Shared NSColor::colorWithRGBA(CGFloat red, CGFloat green, CGFloat blue, CGFloat alpha) {
    return makeObject<NSColor>(cut({red, green, blue, alpha}));
}

NSColor::Shared NSColor::colorWithWhite(CGFloat white, CGFloat alpha) {
    return colorWithRGBA(white, white, white, alpha);
}

NSColor::Shared NSColor::colorWithCGColor(const CGColor& color) { return makeObject<NSColor>(cut(color)); }

NSColor::Shared NSColor::colorWithProvider(Provider provider) {
    return makeObject<NSColor>(std::move(provider));
}

// The named colours are made once and never freed: they may be asked for while the process ends.
#define ZQ_NAMED_COLOR(name, ...)                             \
    NSColor::Shared NSColor::name() {                         \
        static const auto& shared = *new Shared(__VA_ARGS__); \
        return shared;                                        \
    }

ZQ_NAMED_COLOR(whiteColor, colorWithWhite(1))
ZQ_NAMED_COLOR(blackColor, colorWithWhite(0))
ZQ_NAMED_COLOR(clearColor, colorWithWhite(0, 0))
ZQ_NAMED_COLOR(labelColor, dynamic(CGColor::white(0, 0.85), CGColor::white(1, 0.85)))
ZQ_NAMED_COLOR(secondaryLabelColor, dynamic(CGColor::white(0, 0.5), CGColor::white(1, 0.55)))
ZQ_NAMED_COLOR(controlAccentColor, dynamic(byte(0x007AFF), byte(0x007AFF)))
ZQ_NAMED_COLOR(controlColor, dynamic(CGColor::white(1), CGColor::white(1, 0.25)))
ZQ_NAMED_COLOR(controlBackgroundColor, dynamic(CGColor::white(1), byte(0x1E1E1E)))
ZQ_NAMED_COLOR(windowBackgroundColor, dynamic(byte(0xECECEC), byte(0x323232)))
ZQ_NAMED_COLOR(separatorColor, dynamic(CGColor::white(0, 0.1), CGColor::white(1, 0.1)))

#undef ZQ_NAMED_COLOR

CGColor NSColor::cgColor() const {
    return provider_ ? cut(provider_(*NSAppearance::currentDrawingAppearance())) : color_;
}

NSColor::Shared NSColor::colorWithAlphaComponent(CGFloat alpha) const {
    if (!provider_) return colorWithCGColor(color_.withAlpha(alpha));
    return colorWithProvider([provider = provider_, alpha](const NSAppearance& appearance) {
        return provider(appearance).withAlpha(alpha);
    });
}

void NSColor::set() const {
    setFill();
    setStroke();
}

void NSColor::setFill() const {
    if (const auto context = NSGraphicsContext::currentContext())
        context->cgContext()->setFillColor(cgColor());
}

void NSColor::setStroke() const {
    if (const auto context = NSGraphicsContext::currentContext()) {
        context->cgContext()->setStrokeColor(cgColor());
    }
}

std::string NSColor::description() const {
    const CGColor color = cgColor();
    char text[96];
    std::snprintf(text, sizeof text, "sRGB %.4g %.4g %.4g %.4g", color.red, color.green, color.blue,
                  color.alpha);
    return text;
}

}  // namespace zqcore::platform
