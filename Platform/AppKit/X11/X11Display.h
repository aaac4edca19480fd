#pragma once

#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/AppKit/Display.h"
#include "Platform/AppKit/PortalAppearance.h"
#include "Platform/AppKit/X11/X11Connection.h"
#include "Platform/AppKit/X11/X11Input.h"
#include "Platform/AppKit/X11/X11Keyboard.h"
#include "Platform/AppKit/X11/X11Screens.h"
#include "Platform/AppKit/X11/X11WindowList.h"
#include "Platform/Dispatch/RunLoop.h"

namespace zqcore::platform {

/// The desktop of an X server. A window's number is the server's own. The application is active while a
/// window of its, other than a non-activating panel, has the focus or the window manager calls it active, and
/// at the start. Units: points in y-up screen space, of as many pixels as `X11Screens` finds. Threads: main
/// thread; the main run loop watches the connection, and an idle display wakes nobody. Lifetime: as every
/// display; its end closes the windows. Failure: a server that goes is told once.
class X11Display final : public Display,
                         public std::enable_shared_from_this<X11Display>,
                         private X11InputHost {
  public:
    /// Connects by the display's name, as ":1"; an empty one is the environment's. Null with a reason where
    /// there is none.
    [[nodiscard]] static std::shared_ptr<X11Display> open(const std::string& name = {},
                                                          std::string* reason = nullptr);
    ~X11Display() override;

    void setHandler(DisplayHandler* handler) override { handler_ = handler; }
    [[nodiscard]] bool isLost() const override { return lost_; }
    [[nodiscard]] std::vector<DisplayScreen> screens() const override { return screens_.screens(); }
    [[nodiscard]] DisplayAppearance appearance() const override;
    [[nodiscard]] std::string keyText(unsigned short keyCode) const override;
    DisplayWindowNumber openWindow(const DisplayWindowState& state) override;
    void updateWindow(DisplayWindowNumber window, const DisplayWindowState& state) override;
    void closeWindow(DisplayWindowNumber window) override;
    void orderFront(DisplayWindowNumber window, bool regardless) override;
    void order(DisplayWindowNumber window, bool above, DisplayWindowNumber other) override;
    void hideWindow(DisplayWindowNumber window) override;
    void focusWindow(DisplayWindowNumber window) override;
    [[nodiscard]] bool isOnActiveSpace(DisplayWindowNumber window) const override;
    void present(DisplayWindowNumber window, const DisplaySurface& surface) override;
    void activateApplication() override;
    void deactivateApplication() override;
    [[nodiscard]] CGPoint pointerLocation() const override;
    [[nodiscard]] unsigned pressedButtons() const override;
    void setReportsOutsideEvents(bool reports) override;
    [[nodiscard]] DisplayWindowNumber windowAt(CGPoint point) const override;
    [[nodiscard]] std::vector<DisplayWindowInfo> windowList(bool onScreenOnly) const override;
    [[nodiscard]] std::optional<DisplayPicture> capture(
        const CGRect& rect, const std::vector<DisplayWindowNumber>& windows) const override;

  private:
    explicit X11Display(std::unique_ptr<X11Connection> connection);
    void listen();
    void processSoon();
    void process();
    void lose();

    // Windows and their order.
    [[nodiscard]] X11WindowStack::iterator find(DisplayWindowNumber number);
    [[nodiscard]] X11Window* window(DisplayWindowNumber number) const;
    [[nodiscard]] X11Window* window(xcb_window_t id) const;
    void placeInLevel(X11WindowStack::iterator window);
    void show(X11Window& window);
    [[nodiscard]] bool isSibling(const X11Window& window) const;
    void restack(X11WindowStack::iterator window);
    void restackManaged(const X11Window& window, const X11Window* sibling, bool above) const;
    void raiseUnmanaged();
    [[nodiscard]] std::uint32_t currentSpace() const;

    // What the server tells.
    void dispatch(const xcb_generic_event_t& event);
    void propertyChanged(xcb_atom_t property);
    void configured(const xcb_configure_notify_event_t& event);
    void reparented(const xcb_reparent_notify_event_t& event);
    void messageCame(const xcb_client_message_event_t& event);
    void screensChanged();
    void spacesChanged();
    void compositorChanged();

    // Focus and activity.
    void focusChanged(const xcb_focus_in_event_t& event, bool in);
    void requestFocus(X11Window& window);
    void giveUpFocus();
    void readFocus();
    void settleFocus();
    void activeWindowChanged();
    void setActive(bool active);

    // X11InputHost.
    [[nodiscard]] DisplayWindowNumber focusedWindow() const override { return focused_; }
    [[nodiscard]] DisplayWindowNumber windowIn(xcb_window_t top, int x, int y) const override;
    void send(const DisplayEvent& event) override;

    std::unique_ptr<X11Connection> held_;
    X11Connection& connection_;
    X11Screens screens_;
    X11Keyboard keyboard_;
    X11Input input_;
    X11WindowStack stack_;
    std::unique_ptr<RunLoop::Watch> watch_;
    std::unique_ptr<PortalAppearance> appearance_;
    DisplayHandler* handler_ = nullptr;
    DisplayWindowNumber focused_ = 0;    // as the server told
    DisplayWindowNumber toldFocus_ = 0;  // as the handler knows
    std::uint32_t focusRequest_ = 0;     // the last request that moved the focus
    xcb_window_t previousFocus_ = 0;     // who had it before an unmanaged window of ours
    xcb_timestamp_t lastTime_ = 0;
    bool active_ = true;
    bool processingSoon_ = false;
    bool lost_ = false;
};

}  // namespace zqcore::platform
