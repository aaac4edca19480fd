#include "Platform/AppKit/X11/X11Display.h"

#include <poll.h>
#include <xcb/randr.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <iterator>
#include <ranges>
#include <utility>

#include "Platform/Dispatch/DispatchQueue.h"

namespace zqcore::platform {

std::shared_ptr<X11Display> X11Display::open(const std::string& name, std::string* reason) {
    std::string why;
    auto connection = X11Connection::open(name, why);
    if (reason) *reason = why;
    if (!connection) return nullptr;
    X11Connection& opened = *connection;
    const X11Connection::Use use(opened);
    std::shared_ptr<X11Display> display(new X11Display(std::move(connection)));
    display->listen();
    return display;
}

X11Display::X11Display(std::unique_ptr<X11Connection> connection)
    : held_(std::move(connection)),
      connection_(*held_),
      screens_(connection_),
      keyboard_(connection_),
      input_(connection_, screens_, keyboard_, *this) {}

X11Display::~X11Display() {
    const X11Connection::Use use(connection_);
    connection_.setPendingHandler({});
    stack_.clear();
}

void X11Display::listen() {
    const X11Connection::Use use(connection_);
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection_.get(), connection_.root(), XCB_CW_EVENT_MASK, &events);
    xcb_randr_select_input(connection_.get(), connection_.root(),
                           XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                               XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
    xcb_xfixes_select_selection_input(connection_.get(), connection_.root(), connection_.atoms().compositor,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
    const std::weak_ptr<X11Display> weak = weak_from_this();
    watch_ = RunLoop::main().watch(xcb_get_file_descriptor(connection_.get()), POLLIN, [weak](short) {
        if (const auto self = weak.lock()) self->process();
    });
    connection_.setPendingHandler([this] { processSoon(); });
    appearance_ = std::make_unique<PortalAppearance>([weak](DisplayAppearance appearance) {
        const auto self = weak.lock();
        if (self && self->handler_ && !self->lost_) self->handler_->displayAppearanceChanged(appearance);
    });
}

// Events that were read while something waited for a reply come from the run loop like any other.
void X11Display::processSoon() {
    if (lost_ || std::exchange(processingSoon_, true)) return;
    DispatchQueue::main()->async([weak = weak_from_this()] {
        const auto self = weak.lock();
        if (!self) return;
        self->processingSoon_ = false;
        self->process();
    });
}

void X11Display::process() {
    const auto held = shared_from_this();
    while (!lost_) {
        X11Event event;
        {
            const X11Connection::Use use(connection_);
            event = connection_.nextEvent();
        }
        if (!event) break;
        dispatch(*event);
    }
    if (lost_) return;
    input_.flush();
    settleFocus();
    if (connection_.isLost()) lose();
}

void X11Display::lose() {
    if (std::exchange(lost_, true)) return;
    const std::string reason(connection_.lossReason());
    watch_.reset();
    stack_.clear();
    focused_ = toldFocus_ = 0;
    if (handler_) handler_->displayLost(reason);
}

DisplayAppearance X11Display::appearance() const {
    return appearance_ ? appearance_->appearance() : DisplayAppearance::light;
}

std::string X11Display::keyText(unsigned short keyCode) const {
    const auto& layout = keyboard_.layout();
    return layout ? layout->character(keyCode, 0).value_or("") : "";
}

X11WindowStack::iterator X11Display::find(DisplayWindowNumber number) {
    return std::ranges::find_if(stack_, [&](const auto& one) { return one->number() == number; });
}

X11Window* X11Display::window(DisplayWindowNumber number) const {
    const auto found = std::ranges::find_if(stack_, [&](const auto& one) { return one->number() == number; });
    return number == 0 || found == stack_.end() ? nullptr : found->get();
}

X11Window* X11Display::window(xcb_window_t id) const { return window(static_cast<DisplayWindowNumber>(id)); }

DisplayWindowNumber X11Display::openWindow(const DisplayWindowState& state) {
    if (lost_) return 0;
    const X11Connection::Use use(connection_);
    stack_.push_back(std::make_unique<X11Window>(connection_, screens_, state));
    const DisplayWindowNumber number = stack_.back()->number();
    placeInLevel(std::prev(stack_.end()));
    return number;
}

void X11Display::updateWindow(DisplayWindowNumber number, const DisplayWindowState& state) {
    const X11Connection::Use use(connection_);
    const auto found = find(number);
    if (found == stack_.end()) return;
    const int oldLevel = (*found)->state().level;
    (*found)->update(state);
    if (oldLevel == state.level) return;
    placeInLevel(found);
    if ((*found)->shown) restack(found);
}

void X11Display::closeWindow(DisplayWindowNumber number) {
    const X11Connection::Use use(connection_);
    const auto found = find(number);
    if (found == stack_.end()) return;
    hideWindow(number);
    stack_.erase(found);
}

// To the front of its level; higher levels stay in front.
void X11Display::placeInLevel(X11WindowStack::iterator window) {
    const int level = (*window)->state().level;
    const auto place =
        std::ranges::find_if(stack_, [&](const auto& one) { return one->state().level > level; });
    if (place != window) stack_.splice(place, stack_, window);
}

// Only children of the same window can be told to lie above each other; a manager's frames hide theirs.
bool X11Display::isSibling(const X11Window& window) const {
    return !window.isManaged() || !connection_.hasWindowManager();
}

void X11Display::restack(X11WindowStack::iterator window) {
    const auto next = std::find_if(std::next(window), stack_.end(),
                                   [&](const auto& one) { return one->shown && isSibling(*one); });
    xcb_connection_t* c = connection_.get();
    if (next == stack_.end()) {
        const std::uint32_t above = XCB_STACK_MODE_ABOVE;
        xcb_configure_window(c, (*window)->id(), XCB_CONFIG_WINDOW_STACK_MODE, &above);
    } else {
        const std::uint32_t below[] = {(*next)->id(), XCB_STACK_MODE_BELOW};
        xcb_configure_window(c, (*window)->id(), XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE,
                             below);
    }
}

void X11Display::restackManaged(const X11Window& window, const X11Window* sibling, bool above) const {
    const std::uint32_t mode = above ? XCB_STACK_MODE_ABOVE : XCB_STACK_MODE_BELOW;
    const auto& atoms = connection_.atoms();
    // A source of 2: this is the user's wish, which a manager follows.
    if (sibling && connection_.supports(atoms.restackWindow))
        connection_.askManager(window.id(), atoms.restackWindow, {2, sibling->id(), mode, 0, 0});
    else
        xcb_configure_window(connection_.get(), window.id(), XCB_CONFIG_WINDOW_STACK_MODE, &mode);
}

// A manager that raised one of its windows may have put it over ours.
void X11Display::raiseUnmanaged() {
    for (auto one = stack_.end(); one != stack_.begin();) {
        --one;
        if ((*one)->shown && !(*one)->isManaged()) restack(one);
    }
}

std::uint32_t X11Display::currentSpace() const {
    const auto space =
        connection_.numbers(connection_.root(), connection_.atoms().currentDesktop, XCB_ATOM_CARDINAL);
    return space.empty() ? 0 : space.front();
}

void X11Display::show(X11Window& window) {
    if (std::exchange(window.shown, true)) return;
    window.space = currentSpace();
    window.map();
}

void X11Display::orderFront(DisplayWindowNumber number, bool regardless) {
    const X11Connection::Use use(connection_);
    const auto found = find(number);
    if (found == stack_.end()) return;
    placeInLevel(found);
    if (isSibling(**found))
        restack(found);
    else if (regardless || active_)
        restackManaged(**found, nullptr, true);
    show(**found);
}

void X11Display::order(DisplayWindowNumber number, bool above, DisplayWindowNumber other) {
    const X11Connection::Use use(connection_);
    const auto found = find(number);
    if (found == stack_.end()) return;
    const int level = (*found)->state().level;
    const auto relative = other == 0 ? stack_.end() : find(other);
    const bool hasRelative =
        relative != stack_.end() && relative != found && (*relative)->state().level == level;
    if (hasRelative) {
        stack_.splice(above ? std::next(relative) : relative, stack_, found);
    } else if (above) {
        placeInLevel(found);
    } else {
        const auto place =
            std::ranges::find_if(stack_, [&](const auto& one) { return one->state().level >= level; });
        if (place != found) stack_.splice(place, stack_, found);
    }
    if (isSibling(**found))
        restack(found);
    else
        restackManaged(**found, hasRelative ? relative->get() : nullptr, above);
    show(**found);
}

void X11Display::hideWindow(DisplayWindowNumber number) {
    const X11Connection::Use use(connection_);
    X11Window* hidden = window(number);
    if (!hidden || !std::exchange(hidden->shown, false)) return;
    if (focused_ == number) giveUpFocus();
    hidden->unmap();
    input_.forget(number);
}

bool X11Display::isOnActiveSpace(DisplayWindowNumber number) const {
    const X11Connection::Use use(connection_);
    const X11Window* one = window(number);
    if (!one) return false;
    if (one->joinsAllSpaces()) return true;
    if (!one->shown) return false;
    const auto own = connection_.numbers(one->id(), connection_.atoms().desktop, XCB_ATOM_CARDINAL);
    if (!one->isManaged() || own.empty()) return one->space == currentSpace() || one->isManaged();
    return own.front() == 0xFFFFFFFF || own.front() == currentSpace();
}

void X11Display::present(DisplayWindowNumber number, const DisplaySurface& surface) {
    const X11Connection::Use use(connection_);
    if (X11Window* one = window(number)) one->present(surface);
}

CGPoint X11Display::pointerLocation() const { return lost_ ? CGPoint{} : input_.pointer(); }

unsigned X11Display::pressedButtons() const { return lost_ ? 0 : input_.pressedButtons(); }

void X11Display::setReportsOutsideEvents(bool reports) {
    if (lost_) return;
    const X11Connection::Use use(connection_);
    input_.setReportsOutside(reports);
}

DisplayWindowNumber X11Display::windowIn(xcb_window_t top, int x, int y) const {
    if (top == XCB_NONE) return 0;
    if (const X11Window* own = window(top)) return own->number();
    const bool framed = std::ranges::any_of(stack_, [&](const auto& one) { return one->top == top; });
    if (!framed) return 0;
    const X11Connection::Use use(connection_);
    // Down through the manager's frame.
    for (int depth = 0; depth < 8; ++depth) {
        const X11Reply<xcb_translate_coordinates_reply_t> reply{xcb_translate_coordinates_reply(
            connection_.get(),
            xcb_translate_coordinates(connection_.get(), connection_.root(), top,
                                      static_cast<std::int16_t>(x), static_cast<std::int16_t>(y)),
            nullptr)};
        if (!reply || reply->child == XCB_NONE) return 0;
        if (const X11Window* own = window(reply->child)) return own->number();
        top = reply->child;
    }
    return 0;
}

DisplayWindowNumber X11Display::windowAt(CGPoint point) const {
    if (lost_) return 0;
    int x = 0;
    int y = 0;
    screens_.pixel(point, x, y);
    return input_.windowAtPixel(x, y);
}

std::vector<DisplayWindowInfo> X11Display::windowList(bool onScreenOnly) const {
    if (lost_) return {};
    const X11Connection::Use use(connection_);
    return X11WindowList(connection_, screens_, stack_).list(onScreenOnly);
}

std::optional<DisplayPicture> X11Display::capture(const CGRect& rect,
                                                  const std::vector<DisplayWindowNumber>& windows) const {
    if (lost_) return std::nullopt;
    const X11Connection::Use use(connection_);
    return X11WindowList(connection_, screens_, stack_).capture(rect, windows);
}

void X11Display::send(const DisplayEvent& event) {
    if (handler_ && !lost_) handler_->displaySentEvent(event);
}

}  // namespace zqcore::platform
