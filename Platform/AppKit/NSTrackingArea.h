#pragma once

#include <cstdint>
#include <memory>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/NSObject.h"

namespace zqcore::platform {

class NSResponder;

/// What an area reports and when, as bits.
using NSTrackingAreaOptions = std::uint32_t;
inline constexpr NSTrackingAreaOptions NSTrackingMouseEnteredAndExited = 1;
inline constexpr NSTrackingAreaOptions NSTrackingMouseMoved = 2;
inline constexpr NSTrackingAreaOptions NSTrackingCursorUpdate = 4;
inline constexpr NSTrackingAreaOptions NSTrackingActiveWhenFirstResponder = 16;
inline constexpr NSTrackingAreaOptions NSTrackingActiveInKeyWindow = 32;
inline constexpr NSTrackingAreaOptions NSTrackingActiveInActiveApp = 64;
inline constexpr NSTrackingAreaOptions NSTrackingActiveAlways = 128;
inline constexpr NSTrackingAreaOptions NSTrackingAssumeInside = 256;
inline constexpr NSTrackingAreaOptions NSTrackingInVisibleRect = 512;
inline constexpr NSTrackingAreaOptions NSTrackingEnabledDuringMouseDrag = 1024;

/// A rectangle of a view, in the view's own space, whose owner hears when the pointer enters and leaves it.
/// An area that is added under the resting pointer counts as entered: the first event is the exit.
/// Threads: main thread. Lifetime: the view holds its areas, an area holds its owner weakly.
class ZQ_EXPORT NSTrackingArea final : public NSObject {
  public:
    NSTrackingArea(CGRect rect, NSTrackingAreaOptions options, const std::shared_ptr<NSResponder>& owner);

    [[nodiscard]] const CGRect& rect() const noexcept { return rect_; }
    [[nodiscard]] NSTrackingAreaOptions options() const noexcept { return options_; }
    [[nodiscard]] bool has(NSTrackingAreaOptions option) const noexcept { return (options_ & option) != 0; }
    [[nodiscard]] std::shared_ptr<NSResponder> owner() const noexcept { return owner_.lock(); }

  private:
    friend class PointerTracking;

    CGRect rect_;
    NSTrackingAreaOptions options_;
    std::weak_ptr<NSResponder> owner_;
    bool inside_ = false;
};

}  // namespace zqcore::platform
