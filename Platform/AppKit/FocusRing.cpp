#include "Platform/AppKit/FocusRing.h"

#include "Platform/AppKit/GuardedCall.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSGraphicsContext.h"

namespace zqcore::platform {

namespace {

constexpr CGFloat kReach = 4;  // how far the glow is seen
constexpr CGFloat kBlur = 4;
// One blurred copy alone is too faint at the edge.
constexpr int kCopies = 3;

void drawMask(NSView& view, CGContext& context) {
    // Borrowed for the call.
    const GraphicsContextScope scope(std::shared_ptr<CGContext>(std::shared_ptr<void>(), &context));
    context.setFillColor(CGColor::white(0));
    guardedCall("drawFocusRingMask", [&] { view.drawFocusRingMask(); });
}

}  // namespace

bool hasFocusRing(const std::shared_ptr<NSResponder>& responder) {
    const auto view = std::dynamic_pointer_cast<NSView>(responder);
    return view && !CGRectIsEmpty(view->focusRingMaskBounds());
}

void drawFocusRing(NSWindow& window, CGContext& context) {
    const auto first = window.firstResponder();
    if (!window.isKeyWindow() || !hasFocusRing(first)) return;
    const auto view = std::static_pointer_cast<NSView>(first);
    const CGRect visible = view->visibleRect();
    if (CGRectIsEmpty(visible)) return;
    const CGPoint origin = view->convertPointToView({0, 0}, nullptr);
    const bool flipped = view->convertPointToView({0, 1}, nullptr).y < origin.y;
    context.saveGState();
    context.translateBy(origin.x, origin.y);
    if (flipped) context.flip(0);
    context.clipTo(CGRectInset(visible, -kReach, -kReach));
    context.beginTransparencyLayer();
    for (int copy = 0; copy < kCopies; ++copy) {
        context.beginTransparencyLayer(1, CGShadow{NSColor::controlAccentColor()->cgColor(), {}, kBlur});
        drawMask(*view, context);
        context.endTransparencyLayer();
    }
    context.setBlendMode(CGBlendMode::clear);
    drawMask(*view, context);
    context.endTransparencyLayer();
    context.restoreGState();
}

}  // namespace zqcore::platform
