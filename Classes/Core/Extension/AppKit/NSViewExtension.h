#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "Platform/AppKit/NSTrackingArea.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {
class NSColor;
class NSImage;
}  // namespace zqcore::platform

namespace zqcore {

// Operations on views. Units: points. Threads: main thread. Failure: absent where there is no window.

/// Makes one tracking area over the bounds, with the view as owner, in the place of all that it has.
ZQ_EXPORT void zq_convenienceAddTrackingArea(NSView& view, NSTrackingAreaOptions options);

ZQ_EXPORT void removeAllSubviews(NSView& view);

/// The layer's background; null if the view has no layer of its own or none is set.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<NSColor> backgroundColor(const NSView& view);
/// Makes the view layer-backed and sets the layer's background, as the colour is now; null takes it away.
ZQ_EXPORT void setBackgroundColor(NSView& view, const std::shared_ptr<NSColor>& color);

/// Draws that subview in front of, or behind, its siblings; the others keep their order.
ZQ_EXPORT void bringSubviewToFront(NSView& view, const std::shared_ptr<NSView>& subview);
ZQ_EXPORT void sendSubviewToBack(NSView& view, const std::shared_ptr<NSView>& subview);

/// Runs the closure and lays out the view's window as one animation, in seconds.
ZQ_EXPORT void zq_animationGroupLayout(NSView& view, double duration, const std::function<void()>& closure);

/// What the view draws, as an image of its bounds' size that stays sharp; an empty image where that fails.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<NSImage> zq_snapshot(NSView& view);

/// The bounds in the window, or on the screen.
[[nodiscard]] ZQ_EXPORT std::optional<CGRect> zq_frameInWindow(const NSView& view);
[[nodiscard]] ZQ_EXPORT std::optional<CGRect> zq_frameInScreen(const NSView& view);

}  // namespace zqcore
