#pragma once

#include <bitset>
#include <cstdint>
#include <optional>

#include "Platform/AppKit/Display.h"
#include "Platform/AppKit/X11/X11Connection.h"
#include "Platform/AppKit/X11/X11Keyboard.h"
#include "Platform/AppKit/X11/X11Screens.h"

namespace zqcore::platform {

/// What input asks of the display that it belongs to.
class X11InputHost {
  public:
    virtual ~X11InputHost() = default;
    /// The window of ours with the focus.
    [[nodiscard]] virtual DisplayWindowNumber focusedWindow() const = 0;
    /// The window of ours at a pixel that lies in `top`, a child of the root window.
    [[nodiscard]] virtual DisplayWindowNumber windowIn(xcb_window_t top, int x, int y) const = 0;
    virtual void send(const DisplayEvent& event) = 0;
};

/// Turns the server's events of pointer, wheel and keyboard into the display's. Those of our windows come
/// from the core protocol; those of others, while they are wanted, from XInput 2 as raw events, which carry
/// no place: the pointer is asked for it. A wheel's step is 10 points. Threads: main thread. Lifetime: of the
/// display. Failure: none.
class X11Input final {
  public:
    X11Input(X11Connection& connection, const X11Screens& screens, const X11Keyboard& keyboard,
             X11InputHost& host)
        : connection_(connection), screens_(screens), keyboard_(keyboard), host_(host) {}

    void setReportsOutside(bool reports);
    /// Takes an event of input; false for any other.
    bool take(const xcb_generic_event_t& event);
    /// Everything that has arrived was given: tells what was kept for the sake of what might follow.
    void flush();
    /// The window is gone; what was pressed on it will not be released there.
    void forget(DisplayWindowNumber window);

    [[nodiscard]] CGPoint pointer() const;
    /// While an event is told, as it was with that event.
    [[nodiscard]] unsigned pressedButtons() const;
    /// Our window that shows there, 0 for none.
    [[nodiscard]] DisplayWindowNumber windowAtPixel(int x, int y) const;

  private:
    struct Pointer {
        int x = 0;
        int y = 0;
        unsigned state = 0;
        xcb_window_t top = 0;
    };
    struct Click {
        DisplayWindowNumber window = 0;
        int button = -1;
        xcb_timestamp_t time = 0;
        int x = 0;
        int y = 0;
        int count = 0;
    };
    struct RawButton {
        unsigned detail = 0;
        bool down = false;
        xcb_timestamp_t time = 0;
    };
    [[nodiscard]] Pointer query() const;
    void button(const xcb_button_press_event_t& event, bool down);
    void motion(const xcb_motion_notify_event_t& event);
    void leave(const xcb_leave_notify_event_t& event);
    void key(const xcb_key_press_event_t& event, bool down);
    void raw(const xcb_ge_generic_event_t& event);
    void tellOutsideMotion();
    void tellRawButton(bool isOutside);
    void rawKey(xcb_keycode_t code, bool down, bool repeated);
    [[nodiscard]] int clickCount(const xcb_button_press_event_t& event, int button);
    [[nodiscard]] bool fillKey(DisplayEvent& event, xcb_keycode_t code, unsigned state, bool down) const;
    void send(DisplayEvent& event, unsigned buttons);

    X11Connection& connection_;
    const X11Screens& screens_;
    const X11Keyboard& keyboard_;
    X11InputHost& host_;
    Click click_;
    std::optional<RawButton> rawButton_;  // not told yet
    std::bitset<256> keysDown_;
    DisplayWindowNumber grab_ = 0;  // who got the first of the buttons that are down
    unsigned buttons_ = 0;          // down in our windows
    unsigned outsideButtons_ = 0;
    unsigned toldButtons_ = 0;
    int telling_ = 0;
    bool reportsOutside_ = false;
    bool outsideMotion_ = false;
};

}  // namespace zqcore::platform
