#pragma once

#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace gallery {

using namespace zqcore;
using namespace zqcore::platform;

/// Where a page is played for its picture: a headless display with a pointer, under a clock that it steps.
///
/// A picture may show more than one moment: what `keep` and `keepWindows` saw stays in it, whatever comes
/// after, so that tips of which only one is ever up stand side by side.
/// Units: points, seconds. Threads: main thread. Lifetime: one page.
class Stage {
  public:
    Stage(testkit::HeadlessApplication& application, NSWindow& window);

    void advance(double seconds) { application_.advance(seconds); }
    /// Moves the pointer to the middle of the view.
    void pointTo(const NSView& view);
    /// Moves the pointer off the page.
    void pointAway();
    void press() { application_.display().pressButton(); }
    void release() { application_.display().releaseButton(); }

    /// Keeps how the page looks now within the view.
    void keep(const NSView& view);
    /// Keeps the windows that are shown besides the page's.
    void keepWindows();
    /// The page as it looks now, with all that was kept.
    [[nodiscard]] DisplayPicture picture();

    [[nodiscard]] testkit::HeadlessApplication& application() noexcept { return application_; }

  private:
    [[nodiscard]] DisplayPicture pageNow();

    testkit::HeadlessApplication& application_;
    NSWindow& window_;
    DisplayPicture kept_;
};

}  // namespace gallery
