// What the server and the window manager tell: places, screens, desktops, focus.
#include <xcb/randr.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <utility>

#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/X11/X11Display.h"

namespace zqcore::platform {

namespace {

constexpr std::uint8_t kSentBit = 0x80;
constexpr std::uint8_t kSetInputFocus = XCB_SET_INPUT_FOCUS;

// Behind its 32 bytes every event has the number of the request before it; the one within is cut.
template <class Event>
std::uint32_t fullSequence(const Event& event) {
    return reinterpret_cast<const xcb_generic_event_t&>(event).full_sequence;
}

bool activates(const X11Window& window) {
    return (window.state().styleMask & NSWindowStyleMaskNonactivatingPanel) == 0;
}

}  // namespace

void X11Display::dispatch(const xcb_generic_event_t& event) {
    const std::uint8_t type = event.response_type & ~kSentBit;
    if (type == 0) {
        // Requests race with windows that go; only a refused focus changes what is known here.
        const auto& error = reinterpret_cast<const xcb_generic_error_t&>(event);
        if (error.major_code == kSetInputFocus) readFocus();
        return;
    }
    if (type == XCB_FOCUS_IN || type == XCB_FOCUS_OUT)
        return focusChanged(reinterpret_cast<const xcb_focus_in_event_t&>(event), type == XCB_FOCUS_IN);
    // Whoever has the focus by now gets what follows.
    settleFocus();
    if (lost_ || input_.take(event) || keyboard_.take(event)) return;
    if (type == connection_.randrEvent() + XCB_RANDR_SCREEN_CHANGE_NOTIFY ||
        type == connection_.randrEvent() + XCB_RANDR_NOTIFY)
        return screensChanged();
    if (type == connection_.fixesEvent() + XCB_XFIXES_SELECTION_NOTIFY) return compositorChanged();
    switch (type) {
        case XCB_CONFIGURE_NOTIFY:
            return configured(reinterpret_cast<const xcb_configure_notify_event_t&>(event));
        case XCB_REPARENT_NOTIFY:
            return reparented(reinterpret_cast<const xcb_reparent_notify_event_t&>(event));
        case XCB_MAP_NOTIFY: {
            X11Window* shown = window(reinterpret_cast<const xcb_map_notify_event_t&>(event).window);
            if (!shown) return;
            shown->viewable = true;
            if (std::exchange(shown->wantsFocus, false)) requestFocus(*shown);
            return;
        }
        case XCB_UNMAP_NOTIFY: {
            X11Window* hidden = window(reinterpret_cast<const xcb_unmap_notify_event_t&>(event).window);
            if (hidden) hidden->viewable = false;
            return;
        }
        case XCB_PROPERTY_NOTIFY: {
            const auto& notice = reinterpret_cast<const xcb_property_notify_event_t&>(event);
            if (notice.window == connection_.root()) propertyChanged(notice.atom);
            return;
        }
        case XCB_CLIENT_MESSAGE:
            return messageCame(reinterpret_cast<const xcb_client_message_event_t&>(event));
        default:
            return;
    }
}

void X11Display::propertyChanged(xcb_atom_t property) {
    const auto& atoms = connection_.atoms();
    if (property == atoms.activeWindow) {
        activeWindowChanged();
    } else if (property == atoms.currentDesktop) {
        spacesChanged();
        screensChanged();
    } else if (property == atoms.workArea || property == atoms.resourceManager) {
        screensChanged();
    } else if (property == atoms.clientListStacking) {
        const X11Connection::Use use(connection_);
        raiseUnmanaged();
    } else if (property == atoms.supported || property == atoms.supportingCheck) {
        connection_.forgetWindowManager();
    }
}

void X11Display::configured(const xcb_configure_notify_event_t& event) {
    if (event.window == connection_.root()) return screensChanged();
    X11Window* placed = window(event.window);
    // Nobody but us places an unmanaged one.
    if (!placed || !placed->isManaged() || placed->isOutdated(fullSequence(event))) return;
    X11Rect place{event.x, event.y, event.width, event.height};
    // In a frame the server tells the place in that frame; the manager tells the one on the screen.
    if ((event.response_type & kSentBit) == 0 && placed->top != placed->id()) {
        const X11Connection::Use use(connection_);
        const X11Reply<xcb_translate_coordinates_reply_t> at{xcb_translate_coordinates_reply(
            connection_.get(),
            xcb_translate_coordinates(connection_.get(), placed->id(), connection_.root(), 0, 0), nullptr)};
        if (!at) return;
        place.x = at->dst_x;
        place.y = at->dst_y;
    }
    bool moved = false;
    {
        const X11Connection::Use use(connection_);
        moved = placed->moved(place);
    }
    if (moved && handler_) handler_->displayWindowMoved(placed->number(), placed->state().frame);
}

void X11Display::reparented(const xcb_reparent_notify_event_t& event) {
    X11Window* framed = window(event.window);
    if (!framed) return;
    framed->top = framed->id();
    const X11Connection::Use use(connection_);
    xcb_window_t above = event.parent;
    for (int depth = 0; depth < 8 && above != connection_.root() && above != XCB_NONE; ++depth) {
        framed->top = above;
        const X11Reply<xcb_query_tree_reply_t> tree{
            xcb_query_tree_reply(connection_.get(), xcb_query_tree(connection_.get(), above), nullptr)};
        above = tree ? tree->parent : XCB_NONE;
    }
}

void X11Display::messageCame(const xcb_client_message_event_t& event) {
    const auto& atoms = connection_.atoms();
    if (event.type != atoms.wmProtocols || event.format != 32) return;
    const X11Window* asked = window(event.window);
    if (event.data.data32[0] == atoms.wmDeleteWindow && asked) {
        if (handler_) handler_->displayWindowCloseRequested(asked->number());
    } else if (event.data.data32[0] == atoms.ping) {
        // The answer is the message itself, to the root window.
        xcb_client_message_event_t answer = event;
        answer.response_type = XCB_CLIENT_MESSAGE;
        answer.window = connection_.root();
        const X11Connection::Use use(connection_);
        xcb_send_event(connection_.get(), 0, connection_.root(),
                       XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                       reinterpret_cast<const char*>(&answer));
    }
}

// Windows stay where they are on the glass, unless a point is another length now.
void X11Display::screensChanged() {
    const CGFloat oldScale = screens_.scale();
    std::vector<std::pair<DisplayWindowNumber, CGRect>> moved;
    {
        const X11Connection::Use use(connection_);
        if (!screens_.update()) return;
        for (const auto& one : stack_) {
            if (screens_.scale() != oldScale) {
                one->placeAnew();
            } else if (one->placedElsewhere()) {
                moved.emplace_back(one->number(), one->state().frame);
            }
        }
    }
    if (handler_) handler_->displayScreensChanged();
    for (const auto& [number, frame] : moved)
        if (handler_ && !lost_) handler_->displayWindowMoved(number, frame);
}

// A manager hides what it manages when its desktop goes; the others are ours to hide.
void X11Display::spacesChanged() {
    const X11Connection::Use use(connection_);
    const std::uint32_t space = currentSpace();
    for (const auto& one : stack_) {
        if (one->isManaged() || !one->shown) continue;
        if (one->joinsAllSpaces() || one->space == space)
            one->map();
        else
            one->unmap();
    }
}

void X11Display::compositorChanged() {
    std::vector<DisplayWindowNumber> changed;
    {
        const X11Connection::Use use(connection_);
        if (!connection_.updateCompositor()) return;
        for (const auto& one : stack_) {
            one->compositorChanged();
            changed.push_back(one->number());
        }
    }
    for (const DisplayWindowNumber number : changed)
        if (handler_ && !lost_) handler_->displayWindowNeedsPixels(number);
}

// --- Focus and activity ---

void X11Display::focusChanged(const xcb_focus_in_event_t& event, bool in) {
    // Grabs take the keys for a moment only, and the pointer's passing is no focus.
    if (event.mode == XCB_NOTIFY_MODE_GRAB || event.mode == XCB_NOTIFY_MODE_UNGRAB ||
        event.detail == XCB_NOTIFY_DETAIL_POINTER || event.detail == XCB_NOTIFY_DETAIL_INFERIOR)
        return;
    // What was sent before our last word on the focus is history.
    if (static_cast<std::int32_t>(fullSequence(event) - focusRequest_) < 0) return;
    const auto number = static_cast<DisplayWindowNumber>(event.event);
    if (in)
        focused_ = number;
    else if (focused_ == number)
        focused_ = 0;
}

void X11Display::readFocus() {
    const X11Connection::Use use(connection_);
    const X11Reply<xcb_get_input_focus_reply_t> reply{
        xcb_get_input_focus_reply(connection_.get(), xcb_get_input_focus(connection_.get()), nullptr)};
    const X11Window* own = reply ? window(reply->focus) : nullptr;
    focused_ = own ? own->number() : 0;
}

void X11Display::settleFocus() {
    if (focused_ == toldFocus_ || lost_) return;
    toldFocus_ = focused_;
    const X11Window* own = window(focused_);
    const bool active = own ? activates(*own) || active_ : active_ && connection_.hasWindowManager();
    // The key window is known before the application comes to the front, and after it left.
    if (!active) setActive(false);
    if (handler_ && focused_ == toldFocus_) handler_->displayFocusChanged(focused_);
    if (active) setActive(true);
}

void X11Display::activeWindowChanged() {
    std::vector<std::uint32_t> active;
    {
        const X11Connection::Use use(connection_);
        active = connection_.numbers(connection_.root(), connection_.atoms().activeWindow, XCB_ATOM_WINDOW);
    }
    // Between two windows nobody is active.
    if (active.empty() || active.front() == XCB_NONE) return;
    const X11Window* own = window(active.front());
    if (!own || activates(*own)) setActive(own != nullptr);
}

void X11Display::setActive(bool active) {
    if (std::exchange(active_, active) == active || lost_) return;
    if (handler_) handler_->displayActivationChanged(active);
}

void X11Display::activateApplication() {
    if (lost_) return;
    // The handler chooses the key window, whose focus tells the window manager.
    setActive(true);
}

void X11Display::deactivateApplication() {
    if (!lost_) setActive(false);
}

void X11Display::focusWindow(DisplayWindowNumber number) {
    if (lost_) return;
    const X11Connection::Use use(connection_);
    for (const auto& one : stack_) one->wantsFocus = false;
    if (number == 0) {
        if (focused_ != 0) giveUpFocus();
        return;
    }
    X11Window* wanted = window(number);
    if (!wanted || focused_ == number) return;
    // A window takes the focus only when it is on the screen; a manager needs its time for that.
    if (wanted->viewable)
        requestFocus(*wanted);
    else
        wanted->wantsFocus = true;
}

void X11Display::requestFocus(X11Window& wanted) {
    const X11Connection::Use use(connection_);
    const auto& atoms = connection_.atoms();
    if (wanted.isManaged() && connection_.supports(atoms.activeWindow)) {
        constexpr std::uint32_t kUser = 2;
        connection_.askManager(wanted.id(), atoms.activeWindow, {kUser, XCB_CURRENT_TIME, 0, 0, 0});
        return;
    }
    if (!wanted.isManaged() && focused_ == 0) {
        const X11Reply<xcb_get_input_focus_reply_t> before{
            xcb_get_input_focus_reply(connection_.get(), xcb_get_input_focus(connection_.get()), nullptr)};
        previousFocus_ = before ? before->focus : XCB_NONE;
    }
    focusRequest_ =
        xcb_set_input_focus(connection_.get(), XCB_INPUT_FOCUS_POINTER_ROOT, wanted.id(), XCB_CURRENT_TIME)
            .sequence;
}

// Back to who had it. A manager gives the focus of its windows on by itself.
void X11Display::giveUpFocus() {
    const X11Window* own = window(std::exchange(focused_, 0));
    toldFocus_ = 0;
    if (own && own->isManaged() && connection_.hasWindowManager()) return;
    xcb_window_t next = std::exchange(previousFocus_, XCB_NONE);
    if (next == XCB_NONE) next = XCB_INPUT_FOCUS_POINTER_ROOT;
    focusRequest_ =
        xcb_set_input_focus(connection_.get(), XCB_INPUT_FOCUS_POINTER_ROOT, next, XCB_CURRENT_TIME).sequence;
}

}  // namespace zqcore::platform
