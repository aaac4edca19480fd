#include "Platform/AppKit/DisplayPass.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "Platform/AppKit/FocusRing.h"
#include "Platform/AppKit/GuardedCall.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/NSTimer.h"
#include "Platform/Graphics/CGAffineTransform.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/NSAppearance.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/PixelBuffer.h"
#include "Platform/Layout/LayoutEngine.h"
#include "Platform/QuartzCore/CALayer.h"
#include "Platform/QuartzCore/LayerRenderer.h"

namespace zqcore::platform {

namespace {

/// Enough whole pixels for a length, which may be no number or without end: there is no such surface then.
std::int64_t pixels(CGFloat length) {
    constexpr CGFloat kMost = 1'000'000'000;
    return length > 0 ? static_cast<std::int64_t>(std::ceil(std::min(length, kMost))) : 0;
}

constexpr double kFrame = 1.0 / 60;
// Layouts that change constraints again are followed this often in one pass.
constexpr int kLayoutRounds = 8;

/// Says of a window, while it lives, that its pass is under way.
class Underway {
  public:
    explicit Underway(bool& flag) : flag_(flag), outer_(std::exchange(flag, true)) {}
    ~Underway() { flag_ = outer_; }
    Underway(const Underway&) = delete;
    Underway& operator=(const Underway&) = delete;

  private:
    bool& flag_;
    bool outer_;
};

/// The whole pixels that something in `rect`, in points, may touch with its soft edges.
CGRect pixelsRound(const CGRect& rect, CGFloat scale) {
    const CGRect pixels = CGRectApplyAffineTransform(rect, CGAffineTransformMakeScale(scale, scale));
    return CGRectInset(CGRectIntegral(pixels), -1, -1);
}

}  // namespace

// Inner views first, as their own sizes decide about the outer ones.
void DisplayPass::updateConstraints(NSView& view) {
    for (const auto& subview : std::vector(view.subviews())) updateConstraints(*subview);
    if (std::exchange(view.needsUpdateConstraints_, false))
        guardedCall("updateConstraints", [&] { view.updateConstraints(); });
}

bool DisplayPass::layoutMarked(NSView& view) {
    bool any = std::exchange(view.needsLayout_, false);
    if (any) guardedCall("layout", [&] { view.layout(); });
    for (const auto& subview : std::vector(view.subviews())) any = layoutMarked(*subview) || any;
    return any;
}

void DisplayPass::layout(NSView& view) {
    const auto held = view.shared_from_this();
    auto root = view.self();
    while (const auto above = root->superview()) root = above;
    for (int round = 0; round < kLayoutRounds; ++round) {
        updateConstraints(*root);
        LayoutEngine::layout(*root);
        if (!layoutMarked(view)) return;
    }
}

void DisplayPass::updateTracking(NSView& view) {
    if (std::exchange(view.needsTracking_, false))
        guardedCall("updateTrackingAreas", [&] { view.updateTrackingAreas(); });
    for (const auto& subview : std::vector(view.subviews())) updateTracking(*subview);
}

// Also what is scrolled out of sight draws now, at its first pass in a window.
void DisplayPass::drawMarked(NSView& view, CGFloat scale) {
    if (view.isHidden()) return;
    // Kept operations are sharp at any scale, but the images among them chose their forms for one. That one
    // is the scale asked for here, not one read back: each finer scale draws once more, whatever came of it.
    const bool coarse = view.drawnScale_ < scale;
    if (std::exchange(view.needsDisplay_, false) || coarse) {
        view.drawnScale_ = scale;
        if (view.wantsUpdateLayer()) {
            guardedCall("updateLayer", [&] { view.updateLayer(); });
        } else {
            view.layer()->setNeedsDisplay();
            view.layer()->displayIfNeeded(scale);
        }
    }
    for (const auto& subview : std::vector(view.subviews())) drawMarked(*subview, scale);
}

void DisplayPass::run(NSWindow& window) {
    const auto held = window.self();
    const auto appearance = NSApplication::shared()->effectiveAppearance();
    // It may have changed while the window was hidden and heard nothing of it.
    if (window.drawnAppearance_ && window.drawnAppearance_ != appearance) window.appearanceChanged();
    window.drawnAppearance_ = appearance;
    window.needsPass_ = false;
    // What the pass itself does to layers is shown at its end and asks for no second pass.
    const Underway underway(window.inPass_);
    const auto content = window.contentView();
    appearance->performAsCurrentDrawingAppearance([&] {
        if (content) {
            layout(*content);
            updateTracking(*content);
            drawMarked(*content, window.backingScaleFactor());
        }
        if (!window.isVisible() || !(window.needsPixels_ || window.layersChanged_)) return;
        window.layersChanged_ = false;
        present(window, std::exchange(window.needsPixels_, false));
    });
}

void DisplayPass::present(NSWindow& window, bool whole) {
    const auto display = window.display();
    const CGFloat scale = window.backingScaleFactor();
    const CGSize size = window.frame().size;
    const auto width = pixels(size.width * scale);
    const auto height = pixels(size.height * scale);
    if (!display || display->isLost() || width <= 0 || height <= 0) return;
    auto& context = window.surface_;
    const bool fresh = !context || context->width() != width || context->height() != height;
    if (fresh) {
        context = CGContext::bitmap(width, height);
        whole = true;
    }
    if (!context) return;
    if (std::exchange(window.surfaceScale_, scale) != scale) whole = true;
    // The ring follows its view without a layer that would tell.
    const bool ring = window.isKeyWindow() && hasFocusRing(window.firstResponder());
    if (std::exchange(window.showsFocusRing_, ring) || ring) whole = true;
    const auto content = window.contentView();
    const auto now = Clock::current().now();
    // The window's upper edge lies on a pixel's edge, whatever its height.
    const CGFloat lift = static_cast<CGFloat>(height) / scale - size.height;
    CGRect part{{0, 0}, {static_cast<CGFloat>(width), static_cast<CGFloat>(height)}};
    if (content) {
        const CGRect damage = LayerRenderer::damage(*content->layer(), now);
        if (!whole) part = CGRectIntersection(part, pixelsRound(CGRectOffset(damage, 0, lift), scale));
    }
    if (CGRectIsEmpty(part)) return rendered(window);
    context->saveGState();
    context->clipTo(part);
    context->scaleBy(scale, scale);
    context->translateBy(0, lift);
    const CGRect all{{0, 0}, size};
    if (!fresh) context->clear({{-1, -1}, {size.width + 2, size.height + 2}});
    if (window.backgroundColor()) {
        context->setFillColor(window.backgroundColor()->cgColor());
        context->fill(all);
    }
    if (content) {
        const CGRect points =
            CGRectApplyAffineTransform(part, CGAffineTransformMakeScale(1 / scale, 1 / scale));
        LayerRenderer::render(*content->layer(), *context, now, CGRectOffset(points, 0, -lift));
        drawFocusRing(window, *context);
    }
    context->restoreGState();
    const auto pixels = context->pixels();
    DisplaySurface surface{pixels->width(), pixels->height(), pixels->bytesPerRow(), pixels->row(0), scale};
    if (!whole) {
        surface.changed = {static_cast<int>(part.origin.x),
                           surface.height - static_cast<int>(part.origin.y + part.size.height),
                           static_cast<int>(part.size.width), static_cast<int>(part.size.height)};
    }
    rendered(window);
    display->present(window.windowNumber(), surface);
}

void DisplayPass::rendered(NSWindow& window) {
    const auto content = window.contentView();
    if (!content) return;
    content->layer()->markRendered();
    if (content->layer()->hasRunningAnimations()) scheduleFrame(window);
}

// What still moves gets its next picture a frame later; nothing runs once it stands still.
void DisplayPass::scheduleFrame(NSWindow& window) {
    if (std::exchange(window.frameScheduled_, true)) return;
    const auto weak = std::weak_ptr<NSWindow>(window.self());
    NSTimer::timerWithTimeInterval(kFrame, false, [weak](NSTimer&) {
        const auto held = weak.lock();
        if (!held) return;
        held->frameScheduled_ = false;
        held->layersChanged_ = true;
        held->markForDisplay();
    })->addToMainRunLoop(NSRunLoopMode::commonModes);
}

}  // namespace zqcore::platform
