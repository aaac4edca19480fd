#include "Platform/AppKit/X11/X11Input.h"

#include <xcb/xinput.h>

#include <bit>
#include <cstdlib>
#include <optional>
#include <utility>

namespace zqcore::platform {

namespace {

constexpr CGFloat kWheelStep = 10;
constexpr xcb_timestamp_t kDoubleClickTime = 500;  // milliseconds
constexpr int kDoubleClickDistance = 5;
constexpr unsigned short kNoKeyCode = 0xFFFF;
constexpr unsigned kButtonMasks = XCB_BUTTON_MASK_1 | XCB_BUTTON_MASK_2 | XCB_BUTTON_MASK_3;

// The server counts left 1, middle 2, right 3, the wheel's directions 4 to 7, and further buttons from 8.
std::optional<int> buttonOf(unsigned detail) {
    if (detail == 1) return 0;
    if (detail == 3) return 1;
    if (detail == 2) return 2;
    if (detail >= 8 && detail <= 32) return static_cast<int>(detail) - 5;
    return std::nullopt;
}

bool isWheel(unsigned detail) { return detail >= 4 && detail <= 7; }

// Up and left are the positive directions: the content moves down and to the right.
void fillWheel(DisplayEvent& event, unsigned detail) {
    event.type = NSEventType::scrollWheel;
    if (detail == 4) event.scrollingDeltaY = kWheelStep;
    if (detail == 5) event.scrollingDeltaY = -kWheelStep;
    if (detail == 6) event.scrollingDeltaX = kWheelStep;
    if (detail == 7) event.scrollingDeltaX = -kWheelStep;
}

NSEventType typeOf(int button, NSEventType left, NSEventType right, NSEventType other) {
    return button == 0 ? left : button == 1 ? right : other;
}

void fillButton(DisplayEvent& event, int button, bool down) {
    event.buttonNumber = button;
    event.type =
        down ? typeOf(button, NSEventType::leftMouseDown, NSEventType::rightMouseDown,
                      NSEventType::otherMouseDown)
             : typeOf(button, NSEventType::leftMouseUp, NSEventType::rightMouseUp, NSEventType::otherMouseUp);
}

void fillMotion(DisplayEvent& event, unsigned buttons) {
    event.type = NSEventType::mouseMoved;
    if (buttons == 0) return;
    event.buttonNumber = std::countr_zero(buttons);
    event.type = typeOf(event.buttonNumber, NSEventType::leftMouseDragged, NSEventType::rightMouseDragged,
                        NSEventType::otherMouseDragged);
}

unsigned buttonsIn(unsigned state) {
    return ((state & XCB_BUTTON_MASK_1) != 0 ? 1U : 0U) | ((state & XCB_BUTTON_MASK_3) != 0 ? 2U : 0U) |
           ((state & XCB_BUTTON_MASK_2) != 0 ? 4U : 0U);
}

}  // namespace

void X11Input::setReportsOutside(bool reports) {
    if (std::exchange(reportsOutside_, reports) == reports) return;
    if (!reports) {
        outsideButtons_ = 0;
        outsideMotion_ = false;
        rawButton_.reset();
    }
    struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } selection{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, 0};
    if (reports)
        selection.mask = XCB_INPUT_XI_EVENT_MASK_RAW_MOTION | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS |
                         XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_RELEASE | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS |
                         XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE;
    xcb_input_xi_select_events(connection_.get(), connection_.root(), 1, &selection.head);
}

bool X11Input::take(const xcb_generic_event_t& event) {
    const unsigned type = event.response_type & 0x7F;
    if (type == XCB_GE_GENERIC) {
        const auto& generic = reinterpret_cast<const xcb_ge_generic_event_t&>(event);
        if (generic.extension != connection_.inputOpcode()) return false;
        raw(generic);
        return true;
    }
    switch (type) {
        case XCB_BUTTON_PRESS:
        case XCB_BUTTON_RELEASE: {
            const auto& pressed = reinterpret_cast<const xcb_button_press_event_t&>(event);
            tellOutsideMotion();
            // The same stroke comes raw first, and at the same time.
            if (rawButton_ && rawButton_->time == pressed.time && rawButton_->detail == pressed.detail)
                rawButton_.reset();
            tellRawButton(true);
            button(pressed, type == XCB_BUTTON_PRESS);
            return true;
        }
        case XCB_MOTION_NOTIFY:
            tellOutsideMotion();
            tellRawButton(true);
            motion(reinterpret_cast<const xcb_motion_notify_event_t&>(event));
            return true;
        case XCB_LEAVE_NOTIFY:
            leave(reinterpret_cast<const xcb_leave_notify_event_t&>(event));
            return true;
        case XCB_KEY_PRESS:
        case XCB_KEY_RELEASE:
            tellOutsideMotion();
            tellRawButton(true);
            key(reinterpret_cast<const xcb_key_press_event_t&>(event), type == XCB_KEY_PRESS);
            return true;
        default:
            return false;
    }
}

void X11Input::forget(DisplayWindowNumber window) {
    if (grab_ != window) return;
    grab_ = 0;
    buttons_ = 0;
}

X11Input::Pointer X11Input::query() const {
    const X11Connection::Use use(connection_);
    const X11Reply<xcb_query_pointer_reply_t> reply{xcb_query_pointer_reply(
        connection_.get(), xcb_query_pointer(connection_.get(), connection_.root()), nullptr)};
    return reply ? Pointer{reply->root_x, reply->root_y, reply->mask, reply->child} : Pointer{};
}

CGPoint X11Input::pointer() const {
    const Pointer at = query();
    return screens_.point(at.x, at.y);
}

unsigned X11Input::pressedButtons() const { return telling_ > 0 ? toldButtons_ : buttonsIn(query().state); }

DisplayWindowNumber X11Input::windowAtPixel(int x, int y) const {
    const X11Connection::Use use(connection_);
    const X11Reply<xcb_translate_coordinates_reply_t> reply{xcb_translate_coordinates_reply(
        connection_.get(),
        xcb_translate_coordinates(connection_.get(), connection_.root(), connection_.root(),
                                  static_cast<std::int16_t>(x), static_cast<std::int16_t>(y)),
        nullptr)};
    return reply ? host_.windowIn(reply->child, x, y) : 0;
}

void X11Input::send(DisplayEvent& event, unsigned buttons) {
    toldButtons_ = buttons;
    ++telling_;
    host_.send(event);
    --telling_;
}

int X11Input::clickCount(const xcb_button_press_event_t& event, int button) {
    const auto window = static_cast<DisplayWindowNumber>(event.event);
    const bool again = click_.window == window && click_.button == button &&
                       event.time - click_.time <= kDoubleClickTime &&
                       std::abs(event.root_x - click_.x) <= kDoubleClickDistance &&
                       std::abs(event.root_y - click_.y) <= kDoubleClickDistance;
    click_ = {window, button, event.time, event.root_x, event.root_y, again ? click_.count + 1 : 1};
    return click_.count;
}

void X11Input::button(const xcb_button_press_event_t& event, bool down) {
    const auto window = static_cast<DisplayWindowNumber>(event.event);
    DisplayEvent told;
    told.location = screens_.point(event.root_x, event.root_y);
    told.modifierFlags = X11Keyboard::flags(event.state);
    if (isWheel(event.detail)) {
        if (!down) return;
        fillWheel(told, event.detail);
        // Under a grab the wheel goes to the window below the pointer all the same.
        told.windowUnderPointer = buttons_ == 0 ? window : windowAtPixel(event.root_x, event.root_y);
        told.window = told.windowUnderPointer;
        told.outside = told.window == 0;
        if (!told.outside || reportsOutside_) send(told, buttons_);
        return;
    }
    const auto button = buttonOf(event.detail);
    if (!button) return;
    const unsigned bit = 1U << *button;
    if (!down && (buttons_ & bit) == 0) return;
    const bool first = down && buttons_ == 0;
    if (first) grab_ = window;
    buttons_ = down ? buttons_ | bit : buttons_ & ~bit;
    fillButton(told, *button, down);
    told.clickCount = down ? clickCount(event, *button) : click_.count;
    told.window = grab_;
    if (buttons_ == 0) grab_ = 0;
    told.windowUnderPointer = first ? window : windowAtPixel(event.root_x, event.root_y);
    send(told, buttons_);
}

void X11Input::motion(const xcb_motion_notify_event_t& event) {
    // A release that a broken grab kept from us.
    if (buttons_ != 0 && (event.state & kButtonMasks) == 0 && (buttons_ >> 3) == 0) forget(grab_);
    DisplayEvent told;
    told.location = screens_.point(event.root_x, event.root_y);
    told.modifierFlags = X11Keyboard::flags(event.state);
    fillMotion(told, buttons_);
    const auto window = static_cast<DisplayWindowNumber>(event.event);
    told.window = buttons_ == 0 ? window : grab_;
    told.windowUnderPointer = buttons_ == 0 ? window : windowAtPixel(event.root_x, event.root_y);
    send(told, buttons_);
}

// The motion out of our windows, for those who don't ask for the outside: their tracking areas end there.
void X11Input::leave(const xcb_leave_notify_event_t& event) {
    if (event.mode != XCB_NOTIFY_MODE_NORMAL || buttons_ != 0 || reportsOutside_) return;
    // The window that it came to tells of its motion.
    if (windowAtPixel(event.root_x, event.root_y) != 0) return;
    DisplayEvent told;
    told.location = screens_.point(event.root_x, event.root_y);
    told.modifierFlags = X11Keyboard::flags(event.state);
    told.outside = true;
    send(told, 0);
}

bool X11Input::fillKey(DisplayEvent& event, xcb_keycode_t code, unsigned state, bool down) const {
    X11Keyboard::Stroke stroke = keyboard_.stroke(code, state, down);
    if (!stroke.known && stroke.characters.empty()) return false;
    event.type = stroke.isModifier ? NSEventType::flagsChanged
                 : down            ? NSEventType::keyDown
                                   : NSEventType::keyUp;
    event.keyCode = stroke.known ? stroke.keyCode : kNoKeyCode;
    event.modifierFlags = stroke.flags;
    event.characters = std::move(stroke.characters);
    event.charactersIgnoringModifiers = std::move(stroke.plain);
    return true;
}

void X11Input::key(const xcb_key_press_event_t& event, bool down) {
    const bool repeated = down && keysDown_[event.detail];
    keysDown_[event.detail] = down;
    DisplayEvent told;
    told.window = host_.focusedWindow();
    // Where no window has the focus the server sends keys to the one below the pointer, which isn't ours to
    // take.
    if (told.window == 0 || !fillKey(told, event.detail, event.state, down)) return;
    if (repeated && told.type == NSEventType::flagsChanged) return;
    told.isARepeat = repeated;
    told.location = screens_.point(event.root_x, event.root_y);
    told.windowUnderPointer = windowAtPixel(event.root_x, event.root_y);
    send(told, buttons_);
}

void X11Input::raw(const xcb_ge_generic_event_t& event) {
    if (!reportsOutside_) return;
    tellRawButton(true);
    if (event.event_type == XCB_INPUT_RAW_MOTION) {
        // Of a run of motions only the last counts.
        outsideMotion_ = true;
        return;
    }
    tellOutsideMotion();
    const auto& stroke = reinterpret_cast<const xcb_input_raw_key_press_event_t&>(event);
    switch (event.event_type) {
        case XCB_INPUT_RAW_BUTTON_PRESS:
        case XCB_INPUT_RAW_BUTTON_RELEASE:
            rawButton_ = {stroke.detail, event.event_type == XCB_INPUT_RAW_BUTTON_PRESS, stroke.time};
            return;
        case XCB_INPUT_RAW_KEY_PRESS:
        case XCB_INPUT_RAW_KEY_RELEASE:
            return rawKey(static_cast<xcb_keycode_t>(stroke.detail),
                          event.event_type == XCB_INPUT_RAW_KEY_PRESS,
                          (stroke.flags & XCB_INPUT_KEY_EVENT_FLAGS_KEY_REPEAT) != 0);
        default:
            return;
    }
}

void X11Input::flush() {
    tellOutsideMotion();
    tellRawButton(false);
}

void X11Input::tellOutsideMotion() {
    if (!std::exchange(outsideMotion_, false) || buttons_ != 0) return;
    const Pointer at = query();
    if (outsideButtons_ == 0 && host_.windowIn(at.top, at.x, at.y) != 0) return;
    DisplayEvent told;
    told.location = screens_.point(at.x, at.y);
    told.modifierFlags = X11Keyboard::flags(at.state);
    told.outside = true;
    fillMotion(told, outsideButtons_);
    if (outsideButtons_ != 0) told.windowUnderPointer = host_.windowIn(at.top, at.x, at.y);
    send(told, outsideButtons_);
}

// A raw button is another's unless the same stroke comes to one of our windows right behind it. Where nothing
// came yet the pointer's place decides.
void X11Input::tellRawButton(bool isOutside) {
    if (!rawButton_) return;
    const auto [detail, down, time] = *std::exchange(rawButton_, std::nullopt);
    if (buttons_ != 0) return;
    const Pointer at = query();
    const DisplayWindowNumber under = host_.windowIn(at.top, at.x, at.y);
    const bool ours = !isOutside && under != 0;
    DisplayEvent told;
    told.location = screens_.point(at.x, at.y);
    told.modifierFlags = X11Keyboard::flags(at.state);
    told.outside = true;
    told.windowUnderPointer = under;
    if (isWheel(detail)) {
        if (!down || ours) return;
        fillWheel(told, detail);
        return send(told, outsideButtons_);
    }
    const auto button = buttonOf(detail);
    if (!button) return;
    const unsigned bit = 1U << *button;
    if (down ? outsideButtons_ == 0 && ours : (outsideButtons_ & bit) == 0) return;
    outsideButtons_ = down ? outsideButtons_ | bit : outsideButtons_ & ~bit;
    fillButton(told, *button, down);
    told.clickCount = 1;
    send(told, outsideButtons_);
}

void X11Input::rawKey(xcb_keycode_t code, bool down, bool repeated) {
    if (host_.focusedWindow() != 0) return;
    const Pointer at = query();
    DisplayEvent told;
    // The mask that the pointer tells is the one after the stroke; ours is the one before.
    if (!fillKey(told, code, at.state, down)) return;
    if (told.type == NSEventType::flagsChanged) told.modifierFlags = X11Keyboard::flags(at.state);
    told.isARepeat = repeated;
    told.location = screens_.point(at.x, at.y);
    told.outside = true;
    told.windowUnderPointer = host_.windowIn(at.top, at.x, at.y);
    send(told, outsideButtons_);
}

}  // namespace zqcore::platform
