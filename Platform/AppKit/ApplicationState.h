#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "Platform/AppKit/Display.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/PointerTracking.h"

namespace zqcore::platform {

/// What stands behind the application object: it hears from the display, turns what it hears into events, and
/// keeps the windows. Main thread.
struct NSApplication::State final : DisplayHandler {
    explicit State(NSApplication& owner) : application(owner) {}

    NSApplication& application;
    std::shared_ptr<Display> display;
    std::vector<std::shared_ptr<NSWindow>> windows;
    std::vector<std::weak_ptr<NSWindow>> hiddenByDeactivation;
    std::weak_ptr<NSWindow> keyWindow;
    std::weak_ptr<NSWindow> lastKeyWindow;  // becomes key again with the activation
    std::shared_ptr<NSEvent> currentEvent;
    std::shared_ptr<const NSAppearance> appearance;
    std::vector<std::weak_ptr<std::function<void(const std::shared_ptr<const NSAppearance>&)>>>
        appearanceObservers;
    bool active = true;
    bool tracking = false;
    bool fullKeyboardAccess = false;
    bool passRequested = false;
    bool inPass = false;

    // DisplayHandler.
    void displaySentEvent(const DisplayEvent& event) override;
    void displayScreensChanged() override;
    void displayAppearanceChanged(DisplayAppearance appearance) override;
    void displayActivationChanged(bool active) override;
    void displayFocusChanged(DisplayWindowNumber window) override;
    void displayWindowMoved(DisplayWindowNumber window, const CGRect& frame) override;
    void displayWindowCloseRequested(DisplayWindowNumber window) override;
    void displayWindowNeedsPixels(DisplayWindowNumber window) override;
    void displayLost(std::string_view reason) override;

    [[nodiscard]] std::shared_ptr<NSWindow> windowOf(DisplayWindowNumber number) const;
    [[nodiscard]] std::shared_ptr<NSEvent> eventOf(const DisplayEvent& event) const;
    void trackPointer(const DisplayEvent& event, PointerTracking::Motion motion);

    void windowShown(const std::shared_ptr<NSWindow>& window);
    void windowHidden(const std::shared_ptr<NSWindow>& window);
    void setKeyWindow(const std::shared_ptr<NSWindow>& window);
    /// The frontmost visible window that can take the keys; null without one.
    [[nodiscard]] std::shared_ptr<NSWindow> nextKeyWindow() const;
    void tellAppearance();
    void tellMainScreenScale() const;
    void runDisplayPass();
};

}  // namespace zqcore::platform
