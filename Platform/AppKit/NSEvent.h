#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"
#include "Platform/Keyboard/NSEventModifierFlags.h"

namespace zqcore::platform {

class NSWindow;
class NSTrackingArea;

/// What happened, in the platform's numbers; bit `1 << number` of a mask stands for it.
enum class NSEventType : unsigned {
    leftMouseDown = 1,
    leftMouseUp = 2,
    rightMouseDown = 3,
    rightMouseUp = 4,
    mouseMoved = 5,
    leftMouseDragged = 6,
    rightMouseDragged = 7,
    mouseEntered = 8,
    mouseExited = 9,
    keyDown = 10,
    keyUp = 11,
    flagsChanged = 12,
    scrollWheel = 22,
    otherMouseDown = 25,
    otherMouseUp = 26,
    otherMouseDragged = 27,
};

using NSEventMask = std::uint64_t;
[[nodiscard]] constexpr NSEventMask NSEventMaskFromType(NSEventType type) noexcept {
    return NSEventMask{1} << static_cast<unsigned>(type);
}
inline constexpr NSEventMask NSEventMaskAny = ~NSEventMask{0};

/// Where a gesture stands; a wheel without gestures has none.
enum class NSEventPhase : unsigned {
    none = 0,
    began = 1,
    stationary = 2,
    changed = 4,
    ended = 8,
    cancelled = 16,
    mayBegin = 32,
};

/// One event of pointer, wheel or keyboard, and the watching of events. It never changes once made.
/// Units: points; window space has its origin at the lower left of the window's frame, and an event without
/// window is in screen space. Threads: main thread. Lifetime: a monitor lives until `removeMonitor`, whatever
/// becomes of its token.
class ZQ_EXPORT NSEvent final : public NSObject {
  public:
    /// All that an event carries; what does not belong to its type stays as it is here.
    struct Fields {
        NSEventType type = NSEventType::mouseMoved;
        std::weak_ptr<NSWindow> window;
        CGPoint locationInWindow;
        NSEventModifierFlags modifierFlags = 0;
        double timestamp = 0;  ///< seconds of the clock that only runs forward
        int buttonNumber = 0;  ///< 0 left, 1 right, 2 and up the others
        int clickCount = 0;
        unsigned short keyCode = 0;  ///< the platform's codes, 49 the space bar
        std::string characters;
        std::string charactersIgnoringModifiers;
        bool isARepeat = false;
        CGFloat scrollingDeltaX = 0;
        CGFloat scrollingDeltaY = 0;  ///< positive moves the content down
        bool hasPreciseScrollingDeltas = false;
        NSEventPhase phase = NSEventPhase::none;
        NSEventPhase momentumPhase = NSEventPhase::none;
        std::weak_ptr<NSTrackingArea> trackingArea;
    };
    [[nodiscard]] static std::shared_ptr<NSEvent> make(Fields fields);

    [[nodiscard]] NSEventType type() const noexcept { return fields_.type; }
    [[nodiscard]] NSEventMask mask() const noexcept { return NSEventMaskFromType(fields_.type); }
    /// Null for events of other applications and once the window is gone.
    [[nodiscard]] std::shared_ptr<NSWindow> window() const noexcept { return fields_.window.lock(); }
    [[nodiscard]] CGPoint locationInWindow() const noexcept { return fields_.locationInWindow; }
    [[nodiscard]] NSEventModifierFlags modifierFlags() const noexcept { return fields_.modifierFlags; }
    [[nodiscard]] double timestamp() const noexcept { return fields_.timestamp; }
    [[nodiscard]] int buttonNumber() const noexcept { return fields_.buttonNumber; }
    [[nodiscard]] int clickCount() const noexcept { return fields_.clickCount; }
    [[nodiscard]] unsigned short keyCode() const noexcept { return fields_.keyCode; }
    [[nodiscard]] const std::string& characters() const noexcept { return fields_.characters; }
    [[nodiscard]] const std::string& charactersIgnoringModifiers() const noexcept {
        return fields_.charactersIgnoringModifiers;
    }
    [[nodiscard]] bool isARepeat() const noexcept { return fields_.isARepeat; }
    [[nodiscard]] CGFloat scrollingDeltaX() const noexcept { return fields_.scrollingDeltaX; }
    [[nodiscard]] CGFloat scrollingDeltaY() const noexcept { return fields_.scrollingDeltaY; }
    [[nodiscard]] CGFloat deltaX() const noexcept { return fields_.scrollingDeltaX; }
    [[nodiscard]] CGFloat deltaY() const noexcept { return fields_.scrollingDeltaY; }
    [[nodiscard]] bool hasPreciseScrollingDeltas() const noexcept {
        return fields_.hasPreciseScrollingDeltas;
    }
    [[nodiscard]] NSEventPhase phase() const noexcept { return fields_.phase; }
    [[nodiscard]] NSEventPhase momentumPhase() const noexcept { return fields_.momentumPhase; }
    /// The area that was entered or left.
    [[nodiscard]] std::shared_ptr<NSTrackingArea> trackingArea() const noexcept {
        return fields_.trackingArea.lock();
    }

    /// Where the pointer is now, in screen space; not where it was at some event.
    [[nodiscard]] static CGPoint mouseLocation();
    /// The buttons that are down now, bit 0 the left one.
    [[nodiscard]] static unsigned pressedMouseButtons();

    using LocalHandler = std::function<std::shared_ptr<NSEvent>(const std::shared_ptr<NSEvent>&)>;
    using GlobalHandler = std::function<void(const std::shared_ptr<NSEvent>&)>;
    /// Sees this application's own events of `mask` before they are dispatched, and gives the event to go on
    /// with: the same, another one, or null, which stops it. Monitors are called in the order of adding. What
    /// a press on a control swallows, they don't see.
    static std::shared_ptr<NSObject> addLocalMonitorForEventsMatchingMask(NSEventMask mask,
                                                                          LocalHandler handler);
    /// Sees copies of the events of `mask` that go to other applications, never our own; keys only while
    /// `AXIsProcessTrusted`.
    static std::shared_ptr<NSObject> addGlobalMonitorForEventsMatchingMask(NSEventMask mask,
                                                                           GlobalHandler handler);
    /// Ends a monitor at once, also from within a handler. Null and strangers do nothing.
    static void removeMonitor(const std::shared_ptr<NSObject>& monitor);

  private:
    template <class T, class... Arguments>
    friend std::shared_ptr<T> makeObject(Arguments&&...);
    explicit NSEvent(Fields fields) : fields_(std::move(fields)) {}

    Fields fields_;
};

}  // namespace zqcore::platform
