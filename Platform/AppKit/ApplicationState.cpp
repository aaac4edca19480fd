#include "Platform/AppKit/ApplicationState.h"

#include <algorithm>
#include <string>
#include <utility>

#include "Platform/AppKit/EventMonitors.h"
#include "Platform/AppKit/GuardedCall.h"
#include "Platform/AppKit/NSScreen.h"
#include "Platform/AppKit/NSTrackingArea.h"
#include "Platform/AppKit/NSView.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Base/Clock.h"
#include "Platform/Base/NSLog.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Platform/Graphics/ScreenScale.h"

namespace zqcore::platform {

namespace {

double secondsOf(Clock::Instant instant) { return std::chrono::duration<double>(instant.sinceStart).count(); }

bool isDrag(NSEventType type) {
    return type == NSEventType::leftMouseDragged || type == NSEventType::rightMouseDragged ||
           type == NSEventType::otherMouseDragged;
}

bool isRelease(NSEventType type) {
    return type == NSEventType::leftMouseUp || type == NSEventType::rightMouseUp ||
           type == NSEventType::otherMouseUp;
}

}  // namespace

std::shared_ptr<NSWindow> NSApplication::State::windowOf(DisplayWindowNumber number) const {
    if (number <= 0) return nullptr;
    const auto found =
        std::ranges::find_if(windows, [&](const auto& window) { return window->windowNumber() == number; });
    return found == windows.end() ? nullptr : *found;
}

std::shared_ptr<NSEvent> NSApplication::State::eventOf(const DisplayEvent& event) const {
    const auto window = windowOf(event.window);
    NSEvent::Fields fields;
    fields.type = event.type;
    fields.window = window;
    fields.locationInWindow = window ? window->convertPointFromScreen(event.location) : event.location;
    fields.modifierFlags = event.modifierFlags;
    fields.timestamp = secondsOf(Clock::current().now());
    fields.buttonNumber = event.buttonNumber;
    fields.clickCount = event.clickCount;
    fields.keyCode = event.keyCode;
    fields.characters = event.characters;
    fields.charactersIgnoringModifiers = event.charactersIgnoringModifiers;
    fields.isARepeat = event.isARepeat;
    fields.scrollingDeltaX = event.scrollingDeltaX;
    fields.scrollingDeltaY = event.scrollingDeltaY;
    fields.hasPreciseScrollingDeltas = event.hasPreciseScrollingDeltas;
    fields.phase = event.phase;
    fields.momentumPhase = event.momentumPhase;
    return NSEvent::make(std::move(fields));
}

void NSApplication::State::displaySentEvent(const DisplayEvent& event) {
    const auto held = application.shared_from_this();
    if (event.type == NSEventType::mouseMoved) trackPointer(event, PointerTracking::Motion::plain);
    if (isDrag(event.type)) trackPointer(event, PointerTracking::Motion::drag);
    if (event.outside) {
        EventMonitors::shared().tellGlobal(eventOf(event));
    } else {
        guardedCall("sendEvent", [&] { application.sendEvent(eventOf(event)); });
    }
    if (!isRelease(event.type)) return;
    // Whatever became of the control that was pressed: the release ends it.
    if (event.type == NSEventType::leftMouseUp) application.endTracking();
    if (display->pressedButtons() == 0) trackPointer(event, PointerTracking::Motion::release);
}

void NSApplication::State::trackPointer(const DisplayEvent& event, PointerTracking::Motion motion) {
    auto& areas = PointerTracking::shared();
    for (const auto& notice : areas.pointerIsAt(event.location, event.windowUnderPointer, motion)) {
        // An earlier handler may have removed the area or its view.
        if (!areas.knows(*notice.area) || notice.view->window() != notice.window) continue;
        NSEvent::Fields fields;
        fields.type = notice.type;
        fields.window = notice.window;
        fields.locationInWindow = notice.window->convertPointFromScreen(event.location);
        fields.modifierFlags = event.modifierFlags;
        fields.timestamp = secondsOf(Clock::current().now());
        fields.trackingArea = notice.area;
        const auto made = NSEvent::make(std::move(fields));
        if (notice.type != NSEventType::mouseMoved) {
            guardedCall("sendEvent", [&] { application.sendEvent(made); });
        } else if (const auto owner = notice.area->owner()) {
            // The monitors get the motion itself, once.
            guardedCall("mouseMoved", [&] { owner->mouseMoved(*made); });
        }
    }
}

void NSApplication::State::displayScreensChanged() {
    for (const auto& window : std::vector(windows)) {
        window->needsPixels_ = true;
        window->markForDisplay();
    }
    tellMainScreenScale();
    NSNotificationCenter::defaultCenter().postNotificationName(
        NSApplicationDidChangeScreenParametersNotification, application.shared_from_this());
}

void NSApplication::State::displayAppearanceChanged(DisplayAppearance /*appearance*/) {
    if (!appearance) tellAppearance();
}

void NSApplication::State::displayActivationChanged(bool nowActive) {
    if (std::exchange(active, nowActive) == nowActive) return;
    const auto held = application.shared_from_this();
    if (nowActive) {
        for (const auto& weak : std::exchange(hiddenByDeactivation, {})) {
            if (const auto window = weak.lock()) window->orderFront();
        }
        if (keyWindow.expired()) {
            const auto last = lastKeyWindow.lock();
            setKeyWindow(last && last->isVisible() && last->canBecomeKey() ? last : nextKeyWindow());
        }
    } else {
        const auto key = keyWindow.lock();
        lastKeyWindow = key;
        // A non-activating panel works for the application in front, so it keeps the keys.
        if (key && (key->styleMask() & NSWindowStyleMaskNonactivatingPanel) == 0) setKeyWindow(nullptr);
        std::vector<std::weak_ptr<NSWindow>> hidden;
        for (const auto& window : std::vector(windows)) {
            if (!window->hidesOnDeactivate() || !window->isVisible()) continue;
            window->orderOut();
            hidden.push_back(window);
        }
        hiddenByDeactivation = std::move(hidden);
    }
    NSNotificationCenter::defaultCenter().postNotificationName(
        nowActive ? NSApplicationDidBecomeActiveNotification : NSApplicationDidResignActiveNotification,
        held);
}

void NSApplication::State::displayFocusChanged(DisplayWindowNumber window) {
    const auto focused = windowOf(window);
    if (window == 0 || (focused && focused->canBecomeKey())) setKeyWindow(focused);
}

void NSApplication::State::displayWindowMoved(DisplayWindowNumber window, const CGRect& frame) {
    if (const auto moved = windowOf(window)) moved->desktopMoved(frame);
}

void NSApplication::State::displayWindowCloseRequested(DisplayWindowNumber window) {
    if (const auto closing = windowOf(window)) guardedCall("close", [&] { closing->close(); });
}

void NSApplication::State::displayWindowNeedsPixels(DisplayWindowNumber window) {
    const auto shown = windowOf(window);
    if (!shown) return;
    shown->needsPixels_ = true;
    shown->markForDisplay();
}

void NSApplication::State::displayLost(std::string_view reason) {
    const auto held = application.shared_from_this();
    NSLog("The display is gone: " + std::string(reason));
    setKeyWindow(nullptr);
    for (const auto& window : std::vector(windows)) window->dropPresses();
    application.endTracking();
    // Nobody sees them any more. They aren't closed: that is for whoever hears of the loss.
    for (const auto& window : std::vector(windows)) window->orderOut();
    hiddenByDeactivation.clear();
    NSNotificationCenter::defaultCenter().postNotificationName(NSApplicationDisplayLostNotification, held);
}

void NSApplication::State::windowShown(const std::shared_ptr<NSWindow>& window) {
    std::erase_if(hiddenByDeactivation, [&](const auto& weak) { return weak.lock() == window; });
    if (std::ranges::find(windows, window) == windows.end()) windows.push_back(window);
}

void NSApplication::State::windowHidden(const std::shared_ptr<NSWindow>& window) {
    std::erase_if(hiddenByDeactivation, [&](const auto& weak) { return weak.lock() == window; });
    std::erase(windows, window);
    if (keyWindow.lock() == window) setKeyWindow(active ? nextKeyWindow() : nullptr);
}

std::shared_ptr<NSWindow> NSApplication::State::nextKeyWindow() const {
    for (const DisplayWindowInfo& info : display->windowList(true)) {
        const auto window = windowOf(info.number);
        if (window && window->canBecomeKey() &&
            (window->styleMask() & NSWindowStyleMaskNonactivatingPanel) == 0)
            return window;
    }
    return nullptr;
}

void NSApplication::State::setKeyWindow(const std::shared_ptr<NSWindow>& window) {
    const auto old = keyWindow.lock();
    if (old == window) return;
    keyWindow = window;
    display->focusWindow(window ? window->windowNumber() : 0);
    tellMainScreenScale();
    if (old) guardedCall("resignKeyWindow", [&] { old->resignKeyWindow(); });
    // A handler of the resigning may have chosen another one.
    if (window && keyWindow.lock() == window)
        guardedCall("becomeKeyWindow", [&] { window->becomeKeyWindow(); });
}

// Drawing stands below screens and can't ask for the scale of the main one.
void NSApplication::State::tellMainScreenScale() const {
    const auto key = keyWindow.lock();
    const auto screen = key ? key->screen() : nullptr;
    if (screen) {
        setMainScreenScale(screen->backingScaleFactor());
    } else if (const auto screens = display->screens(); !screens.empty()) {
        setMainScreenScale(screens.front().scale);
    }
}

void NSApplication::State::tellAppearance() {
    std::erase_if(appearanceObservers, [](const auto& weak) { return weak.expired(); });
    for (const auto& weak : std::vector(appearanceObservers)) {
        if (const auto observer = weak.lock())
            guardedCall("appearance observer", [&] { (*observer)(application.effectiveAppearance()); });
    }
    for (const auto& window : std::vector(windows)) window->appearanceChanged();
}

}  // namespace zqcore::platform
