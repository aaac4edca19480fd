#include <utility>

#include "Platform/AppKit/GuardedCall.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSTrackingArea.h"
#include "Platform/AppKit/NSWindow.h"

namespace zqcore::platform {

namespace {

constexpr unsigned short kLeftArrow = 123;
constexpr unsigned short kRightArrow = 124;

using Operation = void (NSResponder::*)(const NSEvent&);

// What an event is to a responder.
Operation operationFor(NSEventType type) {
    switch (type) {
        case NSEventType::leftMouseDown:
            return &NSResponder::mouseDown;
        case NSEventType::leftMouseUp:
            return &NSResponder::mouseUp;
        case NSEventType::leftMouseDragged:
            return &NSResponder::mouseDragged;
        case NSEventType::rightMouseDown:
            return &NSResponder::rightMouseDown;
        case NSEventType::rightMouseUp:
            return &NSResponder::rightMouseUp;
        case NSEventType::rightMouseDragged:
            return &NSResponder::rightMouseDragged;
        case NSEventType::otherMouseDown:
            return &NSResponder::otherMouseDown;
        case NSEventType::otherMouseUp:
            return &NSResponder::otherMouseUp;
        case NSEventType::otherMouseDragged:
            return &NSResponder::otherMouseDragged;
        case NSEventType::mouseMoved:
            return &NSResponder::mouseMoved;
        case NSEventType::mouseEntered:
            return &NSResponder::mouseEntered;
        case NSEventType::mouseExited:
            return &NSResponder::mouseExited;
        case NSEventType::keyDown:
            return &NSResponder::keyDown;
        case NSEventType::keyUp:
            return &NSResponder::keyUp;
        case NSEventType::flagsChanged:
            return &NSResponder::flagsChanged;
        case NSEventType::scrollWheel:
            return &NSResponder::scrollWheel;
    }
    return nullptr;
}

std::size_t slotOf(NSEventType type) {
    switch (type) {
        case NSEventType::leftMouseDown:
        case NSEventType::leftMouseUp:
        case NSEventType::leftMouseDragged:
            return 0;
        case NSEventType::rightMouseDown:
        case NSEventType::rightMouseUp:
        case NSEventType::rightMouseDragged:
            return 1;
        default:
            return 2;
    }
}

}  // namespace

void NSWindow::tellKeyState() {
    const std::function<void(NSView&)> tell = [&](NSView& view) {
        guardedCall("windowDidChangeKeyState", [&] { view.windowDidChangeKeyState(); });
        for (const auto& subview : std::vector(view.subviews())) tell(*subview);
    };
    if (const auto content = contentView_) tell(*content);
    firstResponderChanged(nullptr);
}

void NSWindow::appearanceChanged() {
    drawnAppearance_ = NSApplication::shared()->effectiveAppearance();
    const std::function<void(NSView&)> tell = [&](NSView& view) {
        guardedCall("viewDidChangeEffectiveAppearance", [&] { view.viewDidChangeEffectiveAppearance(); });
        view.setNeedsDisplay(true);
        for (const auto& subview : std::vector(view.subviews())) tell(*subview);
    };
    if (const auto content = contentView_) tell(*content);
    needsPixels_ = true;
    markForDisplay();
}

void NSWindow::deliver(const std::shared_ptr<NSResponder>& to, const NSEvent& event) {
    const Operation operation = operationFor(event.type());
    if (to && operation) guardedCall("event handler", [&] { (to.get()->*operation)(event); });
}

void NSWindow::sendEvent(const std::shared_ptr<NSEvent>& event) {
    if (!event) return;
    const auto held = self();
    switch (event->type()) {
        case NSEventType::leftMouseDown:
        case NSEventType::rightMouseDown:
        case NSEventType::otherMouseDown:
            return buttonDown(slotOf(event->type()), *event);
        case NSEventType::leftMouseDragged:
        case NSEventType::rightMouseDragged:
        case NSEventType::otherMouseDragged:
            return deliver(pressed_[slotOf(event->type())].lock(), *event);
        case NSEventType::leftMouseUp:
        case NSEventType::rightMouseUp:
        case NSEventType::otherMouseUp:
            return deliver(std::exchange(pressed_[slotOf(event->type())], {}).lock(), *event);
        case NSEventType::mouseEntered:
        case NSEventType::mouseExited: {
            const auto area = event->trackingArea();
            return deliver(area ? area->owner() : nullptr, *event);
        }
        case NSEventType::mouseMoved:
            if (acceptsMouseMoved_) deliver(firstResponder(), *event);
            return;
        case NSEventType::scrollWheel: {
            std::shared_ptr<NSView> hit;
            guardedCall("hitTest", [&] {
                if (contentView_) hit = contentView_->hitTest(event->locationInWindow());
            });
            return deliver(hit ? hit : std::static_pointer_cast<NSResponder>(held), *event);
        }
        case NSEventType::keyDown:
        case NSEventType::keyUp:
        case NSEventType::flagsChanged:
            return deliver(firstResponder(), *event);
    }
}

// The view that gets a button's down gets its drags and its up, wherever the pointer goes.
void NSWindow::buttonDown(std::size_t button, const NSEvent& event) {
    pressed_[button].reset();
    std::shared_ptr<NSView> hit;
    guardedCall("hitTest", [&] {
        if (contentView_) hit = contentView_->hitTest(event.locationInWindow());
    });
    if (button == 0 && !takesFirstPress(hit.get(), event)) return;
    const std::shared_ptr<NSResponder> target =
        hit ? std::static_pointer_cast<NSResponder>(hit) : std::static_pointer_cast<NSResponder>(self());
    pressed_[button] = target;
    if (button == 0 && hit && hit->acceptsFirstResponder()) makeFirstResponder(hit);
    deliver(target, event);
}

// Activates and takes the keys. False if that is all the press is for.
bool NSWindow::takesFirstPress(NSView* view, const NSEvent& event) {
    const auto& application = NSApplication::shared();
    const bool wasActive = application->isActive();
    const bool activates = (state_.styleMask & NSWindowStyleMaskNonactivatingPanel) == 0;
    if (!wasActive && activates) application->activate(true);
    if (!isKeyWindow()) makeKeyWindow();
    if (wasActive || !activates) return true;
    if (state_.styleMask == NSWindowStyleMaskBorderless && state_.level > NSNormalWindowLevel) return true;
    bool accepts = false;
    guardedCall("acceptsFirstMouse", [&] { accepts = view && view->acceptsFirstMouse(&event); });
    return accepts;
}

// The end of the chain: what no view wanted becomes a key equivalent, or a command to the first responder.
void NSWindow::keyDown(const NSEvent& event) {
    if (performKeyEquivalent(event)) return;
    const auto responder = firstResponder();
    if (event.keyCode() == kLeftArrow)
        responder->doCommandBySelector(Selector::of<&NSResponder::moveLeft>("moveLeft:"));
    if (event.keyCode() == kRightArrow)
        responder->doCommandBySelector(Selector::of<&NSResponder::moveRight>("moveRight:"));
}

bool NSWindow::performKeyEquivalent(const NSEvent& event) {
    const auto held = self();
    const auto content = contentView_;
    return content && content->performKeyEquivalent(event);
}

}  // namespace zqcore::platform
