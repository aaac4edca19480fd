#pragma once

#include "Platform/AppKit/NSWindow.h"

namespace zqcore::platform {

/// A window that helps another one. Unlike a window it goes away while the application is inactive and is not
/// released when closed; with the non-activating style a click on it leaves the active application alone.
/// Threads and lifetime: as `NSWindow`.
class ZQ_EXPORT NSPanel : public NSWindow {
  public:
    explicit NSPanel(const CGRect& contentRect = {},
                     NSWindowStyleMask styleMask = NSWindowStyleMaskNonactivatingPanel,
                     NSBackingStoreType backing = NSBackingStoreType::buffered, bool defer = true);

    [[nodiscard]] bool canBecomeMain() const override { return false; }
};

}  // namespace zqcore::platform
