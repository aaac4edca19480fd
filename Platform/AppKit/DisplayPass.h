#pragma once

#include "Platform/Base/CGGeometry.h"

namespace zqcore::platform {

class NSView;
class NSWindow;

/// What brings windows up to date at the end of a turn: constraints, layout, tracking areas, drawing. Main
/// thread. Exceptions of overrides are caught, with one log line each.
class DisplayPass {
  public:
    DisplayPass() = delete;

    static void run(NSWindow& window);
    /// Constraints and layout alone.
    static void layout(NSView& view);
    static void updateConstraints(NSView& view);

  private:
    static bool layoutMarked(NSView& view);
    static void updateTracking(NSView& view);
    static void drawMarked(NSView& view, CGFloat scale);
    static void present(NSWindow& window, bool whole);
    static void rendered(NSWindow& window);
    static void scheduleFrame(NSWindow& window);
};

}  // namespace zqcore::platform
