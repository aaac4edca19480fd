#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "Platform/AppKit/Display.h"
#include "Platform/AppKit/NSResponder.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {

class CGContext;
class NSAppearance;
class NSColor;
class NSScreen;
class NSViewController;
class SteppedAnimation;

inline constexpr std::string_view NSWindowWillCloseNotification = "NSWindowWillCloseNotification";
inline constexpr std::string_view NSWindowDidBecomeKeyNotification = "NSWindowDidBecomeKeyNotification";
inline constexpr std::string_view NSWindowDidResignKeyNotification = "NSWindowDidResignKeyNotification";
inline constexpr std::string_view NSWindowDidMoveNotification = "NSWindowDidMoveNotification";
inline constexpr std::string_view NSWindowDidResizeNotification = "NSWindowDidResizeNotification";

using NSWindowLevel = int;
inline constexpr NSWindowLevel NSNormalWindowLevel = 0;
inline constexpr NSWindowLevel NSFloatingWindowLevel = 3;
inline constexpr NSWindowLevel NSModalPanelWindowLevel = 8;
inline constexpr NSWindowLevel NSMainMenuWindowLevel = 24;
inline constexpr NSWindowLevel NSStatusWindowLevel = 25;
inline constexpr NSWindowLevel NSPopUpMenuWindowLevel = 101;
inline constexpr NSWindowLevel NSScreenSaverWindowLevel = 1000;

using NSWindowStyleMask = unsigned;
inline constexpr NSWindowStyleMask NSWindowStyleMaskBorderless = 0;
inline constexpr NSWindowStyleMask NSWindowStyleMaskTitled = 1;
inline constexpr NSWindowStyleMask NSWindowStyleMaskClosable = 2;
inline constexpr NSWindowStyleMask NSWindowStyleMaskMiniaturizable = 4;
inline constexpr NSWindowStyleMask NSWindowStyleMaskResizable = 8;
inline constexpr NSWindowStyleMask NSWindowStyleMaskUtilityWindow = 16;
inline constexpr NSWindowStyleMask NSWindowStyleMaskNonactivatingPanel = 128;

using NSWindowCollectionBehavior = unsigned;
inline constexpr NSWindowCollectionBehavior NSWindowCollectionBehaviorCanJoinAllSpaces = 1;
inline constexpr NSWindowCollectionBehavior NSWindowCollectionBehaviorMoveToActiveSpace = 2;
inline constexpr NSWindowCollectionBehavior NSWindowCollectionBehaviorManaged = 4;
inline constexpr NSWindowCollectionBehavior NSWindowCollectionBehaviorTransient = 8;
inline constexpr NSWindowCollectionBehavior NSWindowCollectionBehaviorStationary = 16;
inline constexpr NSWindowCollectionBehavior NSWindowCollectionBehaviorParticipatesInCycle = 32;
inline constexpr NSWindowCollectionBehavior NSWindowCollectionBehaviorIgnoresCycle = 64;
inline constexpr NSWindowCollectionBehavior NSWindowCollectionBehaviorFullScreenPrimary = 128;
inline constexpr NSWindowCollectionBehavior NSWindowCollectionBehaviorFullScreenAuxiliary = 256;
inline constexpr NSWindowCollectionBehavior NSWindowCollectionBehaviorCanJoinAllApplications = 1 << 18;

enum class NSBackingStoreType { buffered = 2 };
enum class NSWindowAnimationBehavior { standard = 0, none = 2 };
enum class NSWindowSharingType { none = 0, readOnly = 1 };

/// A window on the display. Units: points in y-up screen space; the content view fills the whole frame, since
/// the desktop draws what is round it. Threads: main thread.
/// Lifetime: the application holds a window while it is visible. A window holds its content view and
/// controller. Failure: without a display, or once it is lost, a window keeps its state and shows nothing.
class ZQ_EXPORT NSWindow : public NSResponder {
  public:
    explicit NSWindow(const CGRect& contentRect = {},
                      NSWindowStyleMask styleMask = NSWindowStyleMaskBorderless,
                      NSBackingStoreType backing = NSBackingStoreType::buffered, bool defer = true);
    ~NSWindow() override;

    // Geometry.
    [[nodiscard]] const CGRect& frame() const noexcept { return frame_; }
    /// Takes the frame as given; with `display` it also lays out and draws at once.
    virtual void setFrame(const CGRect& frame, bool display);
    void setFrameOrigin(CGPoint origin) { setFrame({origin, frame_.size}, false); }
    void setFrameTopLeftPoint(CGPoint point);
    void setContentSize(CGSize size) { setFrame({frame_.origin, size}, false); }
    [[nodiscard]] CGRect convertRectToScreen(const CGRect& rect) const noexcept;
    [[nodiscard]] CGRect convertRectFromScreen(const CGRect& rect) const noexcept;
    [[nodiscard]] CGPoint convertPointToScreen(CGPoint point) const noexcept;
    [[nodiscard]] CGPoint convertPointFromScreen(CGPoint point) const noexcept;
    /// The one with most of the window; null when it is wholly off.
    [[nodiscard]] std::shared_ptr<NSScreen> screen() const;
    [[nodiscard]] CGFloat backingScaleFactor() const;

    // What it is.
    [[nodiscard]] NSWindowStyleMask styleMask() const noexcept { return state_.styleMask; }
    [[nodiscard]] const std::string& title() const noexcept { return state_.title; }
    void setTitle(std::string title);
    [[nodiscard]] NSWindowLevel level() const noexcept { return state_.level; }
    void setLevel(NSWindowLevel level);
    [[nodiscard]] CGFloat alphaValue() const noexcept { return state_.alpha; }
    /// Ends a fade of it that runs.
    void setAlphaValue(CGFloat alpha);
    /// Where changes run to their value under the current animation context.
    class Animator {
      public:
        explicit Animator(NSWindow& window) : window_(window) {}
        void setAlphaValue(CGFloat alpha);

      private:
        NSWindow& window_;
    };
    [[nodiscard]] Animator animator() { return Animator(*this); }
    [[nodiscard]] bool isOpaque() const noexcept { return state_.opaque; }
    void setOpaque(bool opaque);
    [[nodiscard]] const std::shared_ptr<NSColor>& backgroundColor() const noexcept { return background_; }
    void setBackgroundColor(std::shared_ptr<NSColor> color);
    [[nodiscard]] bool hasShadow() const noexcept { return state_.hasShadow; }
    /// Without one the desktop is asked to leave its shadow out. Whether it draws one else is its own choice.
    void setHasShadow(bool hasShadow);
    [[nodiscard]] bool ignoresMouseEvents() const noexcept { return state_.ignoresMouse; }
    void setIgnoresMouseEvents(bool ignores);
    [[nodiscard]] NSWindowSharingType sharingType() const noexcept;
    void setSharingType(NSWindowSharingType type);
    [[nodiscard]] NSWindowCollectionBehavior collectionBehavior() const noexcept {
        return state_.collectionBehavior;
    }
    void setCollectionBehavior(NSWindowCollectionBehavior behavior);
    [[nodiscard]] NSWindowAnimationBehavior animationBehavior() const noexcept { return animation_; }
    void setAnimationBehavior(NSWindowAnimationBehavior behavior) { animation_ = behavior; }
    [[nodiscard]] bool isReleasedWhenClosed() const noexcept { return releasedWhenClosed_; }
    void setReleasedWhenClosed(bool released) { releasedWhenClosed_ = released; }
    [[nodiscard]] bool hidesOnDeactivate() const noexcept { return hidesOnDeactivate_; }
    void setHidesOnDeactivate(bool hides) { hidesOnDeactivate_ = hides; }
    [[nodiscard]] bool acceptsMouseMovedEvents() const noexcept { return acceptsMouseMoved_; }
    void setAcceptsMouseMovedEvents(bool accepts) { acceptsMouseMoved_ = accepts; }

    // Content.
    [[nodiscard]] const std::shared_ptr<NSView>& contentView() const noexcept { return contentView_; }
    virtual void setContentView(std::shared_ptr<NSView> view);
    [[nodiscard]] const std::shared_ptr<NSViewController>& contentViewController() const noexcept {
        return contentViewController_;
    }
    /// Takes the controller's view and, if that has a fitting size, its size.
    void setContentViewController(std::shared_ptr<NSViewController> controller);

    // Order.
    [[nodiscard]] bool isVisible() const noexcept { return visible_; }
    [[nodiscard]] bool isOnActiveSpace() const;
    /// Positive and unique once it was shown, 0 before.
    [[nodiscard]] int windowNumber() const noexcept { return number_; }
    /// To the front of its level, behind another active application's key window.
    virtual void orderFront(NSObject* sender = nullptr);
    virtual void orderFrontRegardless();
    virtual void orderBack(NSObject* sender = nullptr);
    virtual void orderOut(NSObject* sender = nullptr);
    void orderWindow(NSWindowOrderingMode mode, int relativeTo);
    virtual void makeKeyAndOrderFront(NSObject* sender = nullptr);
    /// Posts `NSWindowWillCloseNotification`, then orders out; each time, visible or not.
    virtual void close();

    // Keys.
    [[nodiscard]] virtual bool canBecomeKey() const;
    [[nodiscard]] virtual bool canBecomeMain() const;
    [[nodiscard]] bool isKeyWindow() const;
    [[nodiscard]] bool isMainWindow() const;
    void makeKeyWindow();
    /// Called by the application; every view is told, as buttons look different then.
    virtual void becomeKeyWindow();
    virtual void resignKeyWindow();
    /// Itself if no view is.
    [[nodiscard]] std::shared_ptr<NSResponder> firstResponder() const;
    /// Null means the window itself; false if the old or the new one refuses.
    bool makeFirstResponder(const std::shared_ptr<NSResponder>& responder);

    // Events and drawing.
    virtual void sendEvent(const std::shared_ptr<NSEvent>& event);
    void keyDown(const NSEvent& event) override;
    bool performKeyEquivalent(const NSEvent& event) override;
    void layoutIfNeeded();
    /// Lays out and draws what is marked, at once.
    void displayIfNeeded();

  protected:
    void setup() override;

  private:
    friend class NSApplication;
    friend class NSView;
    friend class DisplayPass;

    [[nodiscard]] std::shared_ptr<Display> display() const { return display_.lock(); }
    bool open();
    void update();
    void order(const std::function<void(Display&)>& place);
    void desktopMoved(const CGRect& frame);
    void applyFrame(const CGRect& frame);
    void viewLeft(const NSView& view);
    void dropPress(std::size_t button);
    void dropPresses();
    void firstResponderChanged(const std::shared_ptr<NSResponder>& old);
    void applyAlpha(CGFloat alpha);
    void rootLayerEntered(NSView& content);
    void rootLayerLeft(NSView& content);
    void tellKeyState();
    void markForDisplay();
    void appearanceChanged();
    void buttonDown(std::size_t button, const NSEvent& event);
    bool takesFirstPress(NSView* view, const NSEvent& event);
    void deliver(const std::shared_ptr<NSResponder>& to, const NSEvent& event);
    [[nodiscard]] std::shared_ptr<NSWindow> self() {
        return std::static_pointer_cast<NSWindow>(shared_from_this());
    }

    CGRect frame_;
    DisplayWindowState state_;
    DisplayWindowNumber number_ = 0;
    std::weak_ptr<Display> display_;
    std::shared_ptr<NSView> contentView_;
    std::shared_ptr<NSViewController> contentViewController_;
    std::shared_ptr<NSColor> background_;
    std::shared_ptr<CGContext> surface_;  // while it is shown
    CGFloat surfaceScale_ = 0;
    std::shared_ptr<const NSAppearance> drawnAppearance_;  // null before the first pass
    std::weak_ptr<NSResponder> firstResponder_;
    // Who got the down of left, right and the other buttons.
    std::array<std::weak_ptr<NSResponder>, 3> pressed_;
    std::shared_ptr<SteppedAnimation> alphaSteps_;
    NSWindowAnimationBehavior animation_ = NSWindowAnimationBehavior::standard;
    bool releasedWhenClosed_ = true;
    bool hidesOnDeactivate_ = false;
    bool acceptsMouseMoved_ = false;
    bool visible_ = false;
    bool closing_ = false;
    bool needsPass_ = true;
    bool needsPixels_ = true;     // all of them
    bool layersChanged_ = false;  // some may be others now
    bool showsFocusRing_ = false;
    bool inPass_ = false;
    bool frameScheduled_ = false;
};

}  // namespace zqcore::platform
