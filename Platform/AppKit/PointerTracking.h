#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "Platform/AppKit/Display.h"

namespace zqcore::platform {

class NSTrackingArea;
class NSView;
class NSWindow;

/// Knows every tracking area of a view and finds out who is entered and left when the pointer moves. Main
/// thread.
class PointerTracking {
  public:
    [[nodiscard]] static PointerTracking& shared();

    /// Notes whether the pointer is inside already: then the first event is the exit. An area that is known
    /// is noted anew, as when its view enters a window.
    void add(NSView& view, const std::shared_ptr<NSTrackingArea>& area);
    void remove(const NSTrackingArea& area);

    /// One event to one owner.
    struct Notice {
        NSEventType type;
        std::shared_ptr<NSView> view;
        std::shared_ptr<NSWindow> window;
        std::shared_ptr<NSTrackingArea> area;
    };
    enum class Motion { plain, drag, release };
    /// Who hears of the pointer's being at `location` with the window `under` it: first those who are left,
    /// then those who are entered, then those in whom it moved. Nobody is told twice; a drag tells only the
    /// areas that ask for it, a release the exits that were held back.
    [[nodiscard]] std::vector<Notice> pointerIsAt(CGPoint location, DisplayWindowNumber under, Motion motion);
    /// Whether the area is still there, for handlers that remove each other's.
    [[nodiscard]] bool knows(const NSTrackingArea& area) const;

  private:
    struct Entry {
        std::weak_ptr<NSView> view;
        std::shared_ptr<NSTrackingArea> area;
    };
    [[nodiscard]] static bool isInside(const NSView& view, const NSTrackingArea& area, CGPoint location,
                                       DisplayWindowNumber under);
    [[nodiscard]] static bool isActive(const NSView& view, const NSTrackingArea& area);

    std::vector<Entry> entries_;
};

}  // namespace zqcore::platform
