#pragma once

#include <list>
#include <memory>
#include <optional>
#include <vector>

#include "Platform/AppKit/Display.h"
#include "Platform/AppKit/X11/X11Connection.h"
#include "Platform/AppKit/X11/X11Screens.h"
#include "Platform/AppKit/X11/X11Window.h"

namespace zqcore::platform {

using X11WindowStack = std::list<std::unique_ptr<X11Window>>;  // back to front; hidden windows too

/// Every window that the server shows, ours and those of others, and pictures of them. With a window manager
/// the others are those it manages, in its order, else the children of the root window. A foreign window's
/// pixels come through Composite, also where something covers it; those of a server without a compositing
/// manager that are covered show what covers them. Threads: main thread. Lifetime: made for one question.
/// Failure: a window that goes meanwhile is left out.
class X11WindowList final {
  public:
    X11WindowList(X11Connection& connection, const X11Screens& screens, const X11WindowStack& own)
        : connection_(connection), screens_(screens), own_(own) {}

    /// Front to back, hidden ones last.
    [[nodiscard]] std::vector<DisplayWindowInfo> list(bool onScreenOnly) const;
    [[nodiscard]] std::optional<DisplayPicture> capture(
        const CGRect& rect, const std::vector<DisplayWindowNumber>& windows) const;

  private:
    /// Pixels with the place of their upper left on the server.
    struct Image {
        X11Rect place;
        std::vector<std::uint32_t> pixels;
        double alpha = 1;
    };
    [[nodiscard]] std::vector<xcb_window_t> frontToBack() const;
    [[nodiscard]] const X11Window* ownWindow(xcb_window_t id) const;
    [[nodiscard]] DisplayWindowInfo describe(const X11Window& window) const;
    [[nodiscard]] std::vector<DisplayWindowInfo> describe(const std::vector<xcb_window_t>& windows) const;
    [[nodiscard]] std::optional<Image> imageOf(xcb_window_t window) const;
    [[nodiscard]] std::optional<Image> foreignImage(xcb_window_t window) const;
    [[nodiscard]] xcb_window_t topOf(xcb_window_t window) const;
    [[nodiscard]] std::optional<Image> read(xcb_drawable_t drawable, const X11Rect& part,
                                            const X11Rect& place) const;

    X11Connection& connection_;
    const X11Screens& screens_;
    const X11WindowStack& own_;
};

}  // namespace zqcore::platform
