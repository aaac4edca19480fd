#pragma once

#include <vector>

#include "Platform/AppKit/Display.h"
#include "Platform/AppKit/X11/X11Connection.h"

namespace zqcore::platform {

/// A rectangle of the server: whole pixels, y-down from the upper left of the root window.
struct X11Rect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    friend bool operator==(const X11Rect&, const X11Rect&) = default;
};

/// The monitors as screens, and the way between the server's pixels and points. One scale holds for all of
/// them, as the server knows none for each: the environment's GDK_SCALE, else the resource Xft.dpi over 96 in
/// quarter steps, 1 to 4. Threads: main thread. Lifetime: of the display.
class X11Screens final {
  public:
    explicit X11Screens(X11Connection& connection);

    [[nodiscard]] const std::vector<DisplayScreen>& screens() const noexcept { return screens_; }
    [[nodiscard]] CGFloat scale() const noexcept { return scale_; }
    /// Reads them anew; true if anything changed.
    bool update();

    [[nodiscard]] CGPoint point(int x, int y) const noexcept;
    [[nodiscard]] CGRect rect(const X11Rect& pixels) const noexcept;
    /// The pixels whose edges are nearest; at least one, and no more than the protocol has.
    [[nodiscard]] X11Rect pixels(const CGRect& rect) const noexcept;
    /// The pixel that a place lies in.
    void pixel(CGPoint point, int& x, int& y) const noexcept;

  private:
    [[nodiscard]] std::vector<X11Rect> monitors() const;
    [[nodiscard]] CGFloat findScale() const;
    [[nodiscard]] X11Rect workArea() const;

    X11Connection& connection_;
    std::vector<DisplayScreen> screens_;
    X11Rect primary_;
    CGFloat scale_ = 1;
};

}  // namespace zqcore::platform
