#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/AppKit/NSEvent.h"
#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// The number of a window on the display, unique and positive; 0 is no window.
using DisplayWindowNumber = std::int32_t;

/// One screen. Screen space is y-up; the first screen of the list has the menu bar and the origin (0, 0).
struct DisplayScreen {
    CGRect frame;
    CGRect visibleFrame;  ///< without menu bar and dock
    CGFloat scale = 1;    ///< pixels a point
    friend bool operator==(const DisplayScreen&, const DisplayScreen&) = default;
};

/// What a window is to the display. Given whole at opening and at each change.
struct DisplayWindowState {
    CGRect frame;       ///< screen space
    int level = 0;      ///< a higher level is always in front
    CGFloat alpha = 1;  ///< 0 to 1
    bool ignoresMouse = false;
    bool opaque = true;  ///< an opaque window needs no alpha channel
    bool hasShadow = true;
    bool sharesPixels = true;  ///< false: listed, but draws nothing into captures
    unsigned styleMask = 0;    ///< the platform's bits: 0 borderless, 1 titled, 128 non-activating panel
    unsigned collectionBehavior = 0;
    std::string title;
    friend bool operator==(const DisplayWindowState&, const DisplayWindowState&) = default;
};

/// Premultiplied pixels, 32 bits each: alpha in the top byte of the native word, then red, green, blue. The
/// first row is the top one.
struct DisplaySurface {
    int width = 0;
    int height = 0;
    std::size_t bytesPerRow = 0;
    const std::uint32_t* pixels = nullptr;
    CGFloat scale = 1;
    /// In pixels from the upper left.
    struct Part {
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;
    };
    /// All that isn't as it was presented last; without it everything may be new.
    std::optional<Part> changed = std::nullopt;
};

/// A surface that owns its pixels.
struct DisplayPicture {
    int width = 0;
    int height = 0;
    CGFloat scale = 1;
    std::vector<std::uint32_t> pixels;
    [[nodiscard]] std::uint32_t pixel(int x, int y) const {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    }
};

/// One event as the display saw it.
struct DisplayEvent {
    NSEventType type = NSEventType::mouseMoved;
    /// The window of ours that gets it: under a grab the one where the button went down, else the topmost at
    /// the place that takes the mouse; for keys the one with the focus. 0 is none.
    DisplayWindowNumber window = 0;
    /// The topmost window of ours under the pointer whatever is grabbed; decides who is entered and left.
    DisplayWindowNumber windowUnderPointer = 0;
    /// It goes to another application or the bare desktop. The motion that leaves our windows is told always,
    /// the rest on demand.
    bool outside = false;
    CGPoint location;  ///< screen space
    NSEventModifierFlags modifierFlags = 0;
    int buttonNumber = 0;
    int clickCount = 0;
    unsigned short keyCode = 0;
    std::string characters;
    std::string charactersIgnoringModifiers;
    bool isARepeat = false;
    CGFloat scrollingDeltaX = 0;
    CGFloat scrollingDeltaY = 0;
    bool hasPreciseScrollingDeltas = false;
    NSEventPhase phase = NSEventPhase::none;
    NSEventPhase momentumPhase = NSEventPhase::none;
};

/// One line of the window list.
struct DisplayWindowInfo {
    DisplayWindowNumber number = 0;
    std::string ownerName;
    int ownerProcess = 0;
    std::optional<std::string> name;
    CGRect frame;  ///< screen space
    int level = 0;
    bool onScreen = true;
};

enum class DisplayAppearance { light, dark };

/// Who hears from a display. Everything comes on the main thread, from the run loop or from within a call to
/// the display.
class DisplayHandler {
  public:
    virtual ~DisplayHandler() = default;
    virtual void displaySentEvent(const DisplayEvent& event) = 0;
    virtual void displayScreensChanged() = 0;
    virtual void displayAppearanceChanged(DisplayAppearance appearance) = 0;
    /// The application came to the front or left it.
    virtual void displayActivationChanged(bool active) = 0;
    /// The keyboard focus went to a window of ours, or with 0 away from them.
    virtual void displayFocusChanged(DisplayWindowNumber window) = 0;
    /// The desktop moved or resized a window.
    virtual void displayWindowMoved(DisplayWindowNumber window, const CGRect& frame) = 0;
    virtual void displayWindowCloseRequested(DisplayWindowNumber window) = 0;
    /// The pixels of a window are lost; present it again.
    virtual void displayWindowNeedsPixels(DisplayWindowNumber window) = 0;
    /// The connection is gone; told once. Every later call to the display does nothing.
    virtual void displayLost(std::string_view reason) = 0;
};

/// What lies behind windows, screens and events: a headless one that tests and picture makers steer, or the
/// desktop's. Units: points in y-up screen space. Threads: main thread only. Lifetime: held by whoever
/// installs it; windows are closed by number. Failure: unknown numbers and a lost display do nothing or
/// answer nothing.
class ZQ_EXPORT Display {
  public:
    virtual ~Display() = default;

    /// The one in force. Without an installed one it is what the default maker gives, else a headless one,
    /// which is told in one log line.
    [[nodiscard]] static std::shared_ptr<Display> current();
    /// Puts a display in force before the application makes windows; null takes it out.
    static void install(std::shared_ptr<Display> display);
    /// How the first `current` makes a display: `openDefaultDisplay` for the desktop's. Empty or a null
    /// result means a headless one.
    static void setDefaultMaker(std::function<std::shared_ptr<Display>()> maker);

    virtual void setHandler(DisplayHandler* handler) = 0;
    [[nodiscard]] virtual bool isLost() const = 0;

    /// At least one; the first is the primary.
    [[nodiscard]] virtual std::vector<DisplayScreen> screens() const = 0;
    [[nodiscard]] virtual DisplayAppearance appearance() const = 0;
    /// Key text by the present layout: what the key of the platform's code gives without modifiers; empty for
    /// keys without text.
    [[nodiscard]] virtual std::string keyText(unsigned short keyCode) const = 0;

    // Windows. A new one is hidden.
    virtual DisplayWindowNumber openWindow(const DisplayWindowState& state) = 0;
    virtual void updateWindow(DisplayWindowNumber window, const DisplayWindowState& state) = 0;
    virtual void closeWindow(DisplayWindowNumber window) = 0;
    /// Shows it in front of its level. Not `regardless`: behind another active application's key window.
    virtual void orderFront(DisplayWindowNumber window, bool regardless) = 0;
    /// Shows it right above or below `other`, 0 meaning all of its level.
    virtual void order(DisplayWindowNumber window, bool above, DisplayWindowNumber other) = 0;
    virtual void hideWindow(DisplayWindowNumber window) = 0;
    /// Gives it the keyboard focus; 0 gives it up.
    virtual void focusWindow(DisplayWindowNumber window) = 0;
    [[nodiscard]] virtual bool isOnActiveSpace(DisplayWindowNumber window) const = 0;
    /// Takes the pixels of the whole window, or the part of them that changed; they are the caller's again
    /// when it returns.
    virtual void present(DisplayWindowNumber window, const DisplaySurface& surface) = 0;
    /// Brings the application to the front, or lets another come.
    virtual void activateApplication() = 0;
    virtual void deactivateApplication() = 0;

    // Pointer and events.
    [[nodiscard]] virtual CGPoint pointerLocation() const = 0;
    [[nodiscard]] virtual unsigned pressedButtons() const = 0;
    /// Whether events that go to other applications are told too, as events with window 0.
    virtual void setReportsOutsideEvents(bool reports) = 0;
    /// The topmost visible window of ours at a place that takes the mouse and that no foreign one covers; 0
    /// none.
    [[nodiscard]] virtual DisplayWindowNumber windowAt(CGPoint point) const = 0;

    // Looking at the screen.
    /// Front to back, foreign windows included.
    [[nodiscard]] virtual std::vector<DisplayWindowInfo> windowList(bool onScreenOnly) const = 0;
    /// The windows drawn over each other on a transparent ground, cut to `rect`, at the scale of its screen.
    /// Without windows: a transparent picture.
    [[nodiscard]] virtual std::optional<DisplayPicture> capture(
        const CGRect& rect, const std::vector<DisplayWindowNumber>& windows) const = 0;
};

}  // namespace zqcore::platform
