#include "Platform/AppKit/Headless/HeadlessDisplay.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "Platform/AppKit/Headless/HeadlessWindow.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/NSProcessInfo.h"
#include "Platform/Graphics/CGRect.h"

namespace zqcore::platform {

namespace {

const DisplayScreen kPlainScreen{{{0, 0}, {1440, 900}}, {{0, 0}, {1440, 876}}, 1};

std::vector<DisplayScreen> atLeastOne(std::vector<DisplayScreen> screens) {
    if (screens.empty()) screens.push_back(kPlainScreen);
    return screens;
}

bool joinsAllSpaces(const DisplayWindowState& state) {
    return (state.collectionBehavior & NSWindowCollectionBehaviorCanJoinAllSpaces) != 0;
}

}  // namespace

HeadlessDisplay::HeadlessDisplay() : HeadlessDisplay(std::vector<DisplayScreen>{}) {}

HeadlessDisplay::HeadlessDisplay(std::vector<DisplayScreen> screens)
    : screens_(atLeastOne(std::move(screens))) {}

HeadlessDisplay::~HeadlessDisplay() = default;

void HeadlessDisplay::setScreens(std::vector<DisplayScreen> screens) {
    if (lost_) return;
    screens_ = atLeastOne(std::move(screens));
    if (handler_) handler_->displayScreensChanged();
}

void HeadlessDisplay::setAppearance(DisplayAppearance appearance) {
    if (lost_ || std::exchange(appearance_, appearance) == appearance) return;
    if (handler_) handler_->displayAppearanceChanged(appearance);
}

void HeadlessDisplay::setApplicationActive(bool active) {
    if (lost_ || std::exchange(active_, active) == active) return;
    if (handler_) handler_->displayActivationChanged(active);
}

void HeadlessDisplay::setActiveSpace(int space) { activeSpace_ = space; }

void HeadlessDisplay::lose(std::string_view reason) {
    if (std::exchange(lost_, true)) return;
    stack_.clear();
    focused_ = 0;
    buttons_ = 0;
    reportsOutside_ = false;
    if (handler_) handler_->displayLost(reason);
}

DisplayWindowNumber HeadlessDisplay::addForeignWindow(const ForeignWindow& window) {
    if (lost_) return 0;
    Window& added = stack_.emplace_back();
    added.number = ++lastNumber_;
    added.state.frame = window.frame;
    added.state.level = window.level;
    added.state.ignoresMouse = window.ignoresMouse;
    added.foreign = window;
    added.space = activeSpace_;
    added.shown = true;
    placeInLevel(std::prev(stack_.end()), false);
    return lastNumber_;
}

HeadlessDisplay::Stack::iterator HeadlessDisplay::find(DisplayWindowNumber number) {
    return std::ranges::find(stack_, number, &Window::number);
}

HeadlessDisplay::Stack::const_iterator HeadlessDisplay::find(DisplayWindowNumber number) const {
    return std::ranges::find(stack_, number, &Window::number);
}

bool HeadlessDisplay::isShown(const Window& window) const {
    return window.shown && (joinsAllSpaces(window.state) || window.space == activeSpace_);
}

DisplayWindowNumber HeadlessDisplay::openWindow(const DisplayWindowState& state) {
    if (lost_) return 0;
    Window& added = stack_.emplace_back();
    added.number = ++lastNumber_;
    added.state = state;
    placeInLevel(std::prev(stack_.end()), false);
    return lastNumber_;
}

void HeadlessDisplay::updateWindow(DisplayWindowNumber window, const DisplayWindowState& state) {
    const auto found = find(window);
    if (found == stack_.end()) return;
    const bool levelChanged = found->state.level != state.level;
    found->state = state;
    if (levelChanged) placeInLevel(found, false);
}

void HeadlessDisplay::closeWindow(DisplayWindowNumber window) {
    const auto found = find(window);
    if (found == stack_.end()) return;
    if (focused_ == window) focused_ = 0;
    stack_.erase(found);
}

// To the front of its level; higher levels stay in front.
void HeadlessDisplay::placeInLevel(Stack::iterator window, bool behindForeignKey) {
    const int level = window->state.level;
    auto place = std::ranges::find_if(stack_, [&](const Window& other) { return other.state.level > level; });
    if (behindForeignKey) {
        const auto key = std::ranges::find_if(stack_, [&](const Window& other) {
            return other.foreign && other.foreign->isKeyWindow && other.state.level == level &&
                   isShown(other);
        });
        if (key != stack_.end()) place = key;
    }
    if (place != window) stack_.splice(place, stack_, window);
}

void HeadlessDisplay::show(Window& window) {
    if (!std::exchange(window.shown, true)) window.space = activeSpace_;
}

void HeadlessDisplay::orderFront(DisplayWindowNumber window, bool regardless) {
    const auto found = find(window);
    if (found == stack_.end()) return;
    show(*found);
    placeInLevel(found, !regardless && !active_);
}

void HeadlessDisplay::order(DisplayWindowNumber window, bool above, DisplayWindowNumber other) {
    const auto found = find(window);
    if (found == stack_.end()) return;
    show(*found);
    const int level = found->state.level;
    const auto relative = other == 0 ? stack_.end() : find(other);
    if (relative != stack_.end() && relative != found && relative->state.level == level) {
        stack_.splice(above ? std::next(relative) : relative, stack_, found);
    } else if (above) {
        placeInLevel(found, false);
    } else {
        const auto place =
            std::ranges::find_if(stack_, [&](const Window& one) { return one.state.level >= level; });
        if (place != found) stack_.splice(place, stack_, found);
    }
}

void HeadlessDisplay::hideWindow(DisplayWindowNumber window) {
    const auto found = find(window);
    if (found == stack_.end()) return;
    found->shown = false;
    if (focused_ == window) focused_ = 0;
}

void HeadlessDisplay::focusWindow(DisplayWindowNumber window) {
    if (window == 0 || find(window) != stack_.end()) focused_ = window;
}

bool HeadlessDisplay::isOnActiveSpace(DisplayWindowNumber window) const {
    const auto found = find(window);
    if (found == stack_.end()) return false;
    return joinsAllSpaces(found->state) || (found->shown && found->space == activeSpace_);
}

void HeadlessDisplay::present(DisplayWindowNumber window, const DisplaySurface& surface) {
    const auto found = find(window);
    if (found == stack_.end() || !surface.pixels) return;
    ++found->presents;
    found->changed = surface.changed;
    const auto rowOf = [&surface](int y) {
        return surface.pixels + static_cast<std::size_t>(y) * (surface.bytesPerRow / 4);
    };
    if (const auto& part = surface.changed; part && found->picture) {
        DisplayPicture& shown = *found->picture;
        for (int y = part->y; y < part->y + part->height; ++y)
            std::copy_n(rowOf(y) + part->x, part->width,
                        shown.pixels.begin() + std::ptrdiff_t{y} * shown.width + part->x);
        return;
    }
    DisplayPicture picture{surface.width, surface.height, surface.scale, {}};
    const auto width = static_cast<std::size_t>(surface.width);
    picture.pixels.reserve(width * static_cast<std::size_t>(surface.height));
    for (int y = 0; y < surface.height; ++y) {
        picture.pixels.insert(picture.pixels.end(), rowOf(y), rowOf(y) + width);
    }
    found->picture = std::move(picture);
}

void HeadlessDisplay::activateApplication() { setApplicationActive(true); }

void HeadlessDisplay::deactivateApplication() { setApplicationActive(false); }

const HeadlessDisplay::Window* HeadlessDisplay::topmostAt(CGPoint point) const {
    for (auto window = stack_.rbegin(); window != stack_.rend(); ++window) {
        if (isShown(*window) && !window->state.ignoresMouse &&
            NSMouseInRect(point, window->state.frame, false))
            return &*window;
    }
    return nullptr;
}

DisplayWindowNumber HeadlessDisplay::windowAt(CGPoint point) const {
    const Window* window = topmostAt(point);
    return window && !window->foreign ? window->number : 0;
}

std::vector<DisplayWindowNumber> HeadlessDisplay::stack() const {
    std::vector<DisplayWindowNumber> numbers;
    for (const Window& window : stack_) {
        if (isShown(window)) numbers.push_back(window.number);
    }
    return numbers;
}

std::optional<DisplayPicture> HeadlessDisplay::windowPicture(DisplayWindowNumber window) const {
    const auto found = find(window);
    return found == stack_.end() ? std::nullopt : found->picture;
}

int HeadlessDisplay::presentCount(DisplayWindowNumber window) const {
    const auto found = find(window);
    return found == stack_.end() ? 0 : found->presents;
}

std::optional<DisplaySurface::Part> HeadlessDisplay::changedPart(DisplayWindowNumber window) const {
    const auto found = find(window);
    return found == stack_.end() ? std::nullopt : found->changed;
}

DisplayWindowState HeadlessDisplay::windowState(DisplayWindowNumber window) const {
    const auto found = find(window);
    return found == stack_.end() ? DisplayWindowState{} : found->state;
}

std::vector<DisplayWindowInfo> HeadlessDisplay::windowList(bool onScreenOnly) const {
    std::vector<DisplayWindowInfo> list;
    for (auto window = stack_.rbegin(); window != stack_.rend(); ++window) {
        if (onScreenOnly && !isShown(*window)) continue;
        DisplayWindowInfo& info = list.emplace_back();
        info.number = window->number;
        info.frame = window->state.frame;
        info.level = window->state.level;
        info.onScreen = isShown(*window);
        if (window->foreign) {
            info.ownerName = window->foreign->ownerName;
            info.ownerProcess = window->foreign->ownerProcess;
            info.name = window->foreign->name;
        } else {
            info.ownerName = NSProcessInfo::processInfo().processName();
            info.ownerProcess = NSProcessInfo::processInfo().processIdentifier();
            if (!window->state.title.empty()) info.name = window->state.title;
        }
    }
    return list;
}

}  // namespace zqcore::platform
