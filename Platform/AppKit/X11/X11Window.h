#pragma once

#include <vector>

#include "Platform/AppKit/Display.h"
#include "Platform/AppKit/X11/X11Connection.h"
#include "Platform/AppKit/X11/X11Screens.h"

namespace zqcore::platform {

/// One window of ours on the server. Its number is the server's. Those above level 0 and those of the
/// untitled non-activating panels are the server's own business (override-redirect): no window manager places
/// or focuses them. The others are managed; which of both it is stays as it was at opening. What is presented
/// lies in the server as the window's background, so that uncovering it needs no word with us.
/// Without a compositing manager nothing blends: a window that isn't opaque is cut out at half its alpha, and
/// a window alpha shows wholly, or at 0 not at all.
/// Threads: main thread. Lifetime: closed with its object. Failure: none; a lost server is no window.
class X11Window final {
  public:
    X11Window(X11Connection& connection, const X11Screens& screens, const DisplayWindowState& state);
    ~X11Window();
    X11Window(const X11Window&) = delete;
    X11Window& operator=(const X11Window&) = delete;

    [[nodiscard]] DisplayWindowNumber number() const noexcept {
        return static_cast<DisplayWindowNumber>(id_);
    }
    [[nodiscard]] xcb_window_t id() const noexcept { return id_; }
    [[nodiscard]] const DisplayWindowState& state() const noexcept { return state_; }
    [[nodiscard]] bool isManaged() const noexcept { return managed_; }
    [[nodiscard]] bool joinsAllSpaces() const noexcept;
    /// Its pixels on the server; 0 before the first.
    [[nodiscard]] xcb_pixmap_t pixmap() const noexcept { return pixmap_; }
    [[nodiscard]] const X11Rect& place() const noexcept { return place_; }

    void update(const DisplayWindowState& state);
    /// Screens or scale changed: it goes where its frame lies now.
    void placeAnew();
    /// The desktop put it elsewhere; false if it is there already.
    bool moved(const X11Rect& place);
    /// The screens changed and it didn't: its frame is the one of its pixels now. True if that is another.
    bool placedElsewhere();
    void present(const DisplaySurface& surface);
    /// A compositing manager came or went; it wants new pixels then.
    void compositorChanged() { applyShape(); }

    void map();
    void unmap();
    [[nodiscard]] bool isMapped() const noexcept { return mapped_; }

    /// Whether a notice of the server about its place was sent before our last word on it.
    [[nodiscard]] bool isOutdated(std::uint32_t sequence) const noexcept;

    /// Whether it is to be seen, and on which desktop it was shown.
    bool shown = false;
    std::uint32_t space = 0;
    /// The focus it was given before the server could show it.
    bool wantsFocus = false;
    bool viewable = false;
    /// The child of the root window that holds it; itself unless a manager framed it.
    xcb_window_t top = 0;

  private:
    void describe();
    void setTitle() const;
    void setOpacity() const;
    void setLevelState() const;
    void setSpaces() const;
    void setMouse() const;
    void setPlaceHint() const;
    void applyShape();
    bool makePixmap();
    void upload(const DisplaySurface& surface, const DisplaySurface::Part& part) const;
    void setShadow() const;

    X11Connection& connection_;
    const X11Screens& screens_;
    DisplayWindowState state_;
    X11Rect place_;
    xcb_window_t id_ = 0;
    xcb_pixmap_t pixmap_ = 0;
    xcb_gcontext_t gc_ = 0;
    int pixmapWidth_ = 0;
    int pixmapHeight_ = 0;
    std::vector<xcb_rectangle_t> shape_;  // what is at least half opaque, if nobody blends
    std::uint32_t placedBy_ = 0;          // the request that placed it last
    bool managed_ = false;
    bool mapped_ = false;
    bool shaped_ = false;
};

}  // namespace zqcore::platform
