#include <utility>

#include "Platform/AppKit/Headless/HeadlessDisplay.h"
#include "Platform/AppKit/Headless/HeadlessWindow.h"

namespace zqcore::platform {

namespace {

// A grab by another application's window, or by the bare desktop.
constexpr DisplayWindowNumber kForeignGrab = -1;

NSEventType buttonType(int button, NSEventType left, NSEventType right, NSEventType other) {
    return button == 0 ? left : button == 1 ? right : other;
}

}  // namespace

// Every event of pointer and keyboard passes here: what goes to others is told only when somebody asked.
void HeadlessDisplay::send(DisplayEvent event) {
    if (!handler_ || lost_) return;
    event.location = pointer_;
    event.modifierFlags = modifiers_;
    event.windowUnderPointer = windowAt(pointer_);
    // The pointer leaves our windows also for those who didn't ask for the outside.
    if (event.outside && !reportsOutside_ && event.type != NSEventType::mouseMoved) return;
    handler_->displaySentEvent(event);
}

void HeadlessDisplay::movePointer(CGPoint location) {
    if (lost_) return;
    pointer_ = location;
    DisplayEvent event;
    if (buttons_ != 0) {
        const int button = (buttons_ & 1) != 0 ? 0 : (buttons_ & 2) != 0 ? 1 : 2;
        event.type = buttonType(button, NSEventType::leftMouseDragged, NSEventType::rightMouseDragged,
                                NSEventType::otherMouseDragged);
        event.buttonNumber = button;
        event.outside = grab_ == kForeignGrab;
        event.window = event.outside ? 0 : grab_;
    } else {
        event.window = windowAt(location);
        event.outside = event.window == 0;
    }
    send(std::move(event));
}

void HeadlessDisplay::pressButton(int button, int clickCount) {
    if (lost_ || button < 0 || button > 31 || (buttons_ & (1U << button)) != 0) return;
    const DisplayWindowNumber hit = windowAt(pointer_);
    if (buttons_ == 0) {
        grab_ = hit != 0 ? hit : kForeignGrab;
        // A press elsewhere brings another application to the front.
        if (hit == 0) setApplicationActive(false);
    }
    buttons_ |= 1U << button;
    DisplayEvent event;
    event.type = buttonType(button, NSEventType::leftMouseDown, NSEventType::rightMouseDown,
                            NSEventType::otherMouseDown);
    event.buttonNumber = button;
    event.clickCount = clickCount;
    event.outside = grab_ == kForeignGrab;
    event.window = event.outside ? 0 : grab_;
    send(std::move(event));
}

void HeadlessDisplay::releaseButton(int button) {
    if (lost_ || button < 0 || button > 31 || (buttons_ & (1U << button)) == 0) return;
    buttons_ &= ~(1U << button);
    DisplayEvent event;
    event.type =
        buttonType(button, NSEventType::leftMouseUp, NSEventType::rightMouseUp, NSEventType::otherMouseUp);
    event.buttonNumber = button;
    event.clickCount = 1;
    event.outside = grab_ == kForeignGrab;
    event.window = event.outside ? 0 : grab_;
    if (buttons_ == 0) grab_ = 0;
    send(std::move(event));
}

void HeadlessDisplay::click(CGPoint location, int button) {
    movePointer(location);
    pressButton(button);
    releaseButton(button);
}

void HeadlessDisplay::scroll(CGFloat deltaX, CGFloat deltaY, NSEventPhase phase) {
    DisplayEvent event;
    event.type = NSEventType::scrollWheel;
    event.scrollingDeltaX = deltaX;
    event.scrollingDeltaY = deltaY;
    event.hasPreciseScrollingDeltas = phase != NSEventPhase::none;
    event.phase = phase;
    event.window = windowAt(pointer_);
    event.outside = event.window == 0;
    send(std::move(event));
}

void HeadlessDisplay::sendKey(NSEventType type, unsigned short keyCode, std::string characters,
                              bool isARepeat) {
    DisplayEvent event;
    event.type = type;
    event.keyCode = keyCode;
    event.charactersIgnoringModifiers = keyText(keyCode);
    event.characters = characters.empty() ? event.charactersIgnoringModifiers : std::move(characters);
    // Keys without a text of their own, as Escape, read as what they type.
    if (event.charactersIgnoringModifiers.empty()) event.charactersIgnoringModifiers = event.characters;
    event.isARepeat = isARepeat;
    event.outside = !active_ && focused_ == 0;
    event.window = focused_;
    send(std::move(event));
}

void HeadlessDisplay::pressKey(unsigned short keyCode, std::string characters, bool isARepeat) {
    sendKey(NSEventType::keyDown, keyCode, std::move(characters), isARepeat);
}

void HeadlessDisplay::releaseKey(unsigned short keyCode, std::string characters) {
    sendKey(NSEventType::keyUp, keyCode, std::move(characters), false);
}

void HeadlessDisplay::setModifierFlags(NSEventModifierFlags flags) {
    if (std::exchange(modifiers_, flags) != flags) sendKey(NSEventType::flagsChanged, 0, {}, false);
}

void HeadlessDisplay::requestClose(DisplayWindowNumber window) {
    if (handler_ && !lost_) handler_->displayWindowCloseRequested(window);
}

void HeadlessDisplay::dragWindow(DisplayWindowNumber window, const CGRect& frame) {
    const auto found = find(window);
    if (found == stack_.end() || found->foreign) return;
    found->state.frame = frame;
    if (handler_) handler_->displayWindowMoved(window, frame);
}

void HeadlessDisplay::setKeyText(unsigned short keyCode, std::string text) {
    keyTexts_[keyCode] = std::move(text);
}

std::string HeadlessDisplay::keyText(unsigned short keyCode) const {
    const auto found = keyTexts_.find(keyCode);
    if (found != keyTexts_.end()) return found->second;
    // The letters, digits and signs of an American keyboard, by key code.
    static constexpr const char* kTexts[] = {
        "a", "s", "d",  "f", "h", "g", "z", "x", "c",  "v", "§", "b", "q", "w", "e",  "r", "y",
        "t", "1", "2",  "3", "4", "6", "5", "=", "9",  "7", "-", "8", "0", "]", "o",  "u", "[",
        "i", "p", "\r", "l", "j", "'", "k", ";", "\\", ",", "/", "n", "m", ".", "\t", " ", "`"};
    return keyCode < std::size(kTexts) ? kTexts[keyCode] : "";
}

}  // namespace zqcore::platform
