#pragma once

#include <memory>
#include <vector>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/NSObject.h"

namespace zqcore::platform {

/// A screen, as it was when asked for. Units: points, y-up; the primary screen's origin is (0, 0).
/// Threads: main thread. Lifetime: a snapshot; ask again after
/// `NSApplicationDidChangeScreenParametersNotification`.
class ZQ_EXPORT NSScreen final : public NSObject {
  public:
    NSScreen(CGRect frame, CGRect visibleFrame, CGFloat scale);

    /// All screens, the one with the menu bar first.
    [[nodiscard]] static std::vector<std::shared_ptr<NSScreen>> screens();
    /// The screen of the window with the keyboard focus, the primary one without such a window.
    [[nodiscard]] static std::shared_ptr<NSScreen> mainScreen();

    [[nodiscard]] const CGRect& frame() const noexcept { return frame_; }
    /// Without menu bar and dock.
    [[nodiscard]] const CGRect& visibleFrame() const noexcept { return visibleFrame_; }
    [[nodiscard]] CGFloat backingScaleFactor() const noexcept { return scale_; }
    /// Points to pixels.
    [[nodiscard]] CGRect convertRectToBacking(const CGRect& rect) const noexcept;

  private:
    CGRect frame_;
    CGRect visibleFrame_;
    CGFloat scale_;
};

}  // namespace zqcore::platform
