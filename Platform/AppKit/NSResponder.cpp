#include "Platform/AppKit/NSResponder.h"

namespace zqcore::platform {

std::shared_ptr<NSResponder> NSResponder::nextResponder() const { return next_.lock(); }

void NSResponder::setNextResponder(const std::shared_ptr<NSResponder>& responder) { next_ = responder; }

void NSResponder::pass(void (NSResponder::*operation)(const NSEvent&), const NSEvent& event) {
    if (const auto next = nextResponder()) (next.get()->*operation)(event);
}

void NSResponder::mouseDown(const NSEvent& event) { pass(&NSResponder::mouseDown, event); }
void NSResponder::mouseDragged(const NSEvent& event) { pass(&NSResponder::mouseDragged, event); }
void NSResponder::mouseUp(const NSEvent& event) { pass(&NSResponder::mouseUp, event); }
void NSResponder::rightMouseDown(const NSEvent& event) { pass(&NSResponder::rightMouseDown, event); }
void NSResponder::rightMouseDragged(const NSEvent& event) { pass(&NSResponder::rightMouseDragged, event); }
void NSResponder::rightMouseUp(const NSEvent& event) { pass(&NSResponder::rightMouseUp, event); }
void NSResponder::otherMouseDown(const NSEvent& event) { pass(&NSResponder::otherMouseDown, event); }
void NSResponder::otherMouseDragged(const NSEvent& event) { pass(&NSResponder::otherMouseDragged, event); }
void NSResponder::otherMouseUp(const NSEvent& event) { pass(&NSResponder::otherMouseUp, event); }
void NSResponder::mouseMoved(const NSEvent& event) { pass(&NSResponder::mouseMoved, event); }
void NSResponder::mouseEntered(const NSEvent& event) { pass(&NSResponder::mouseEntered, event); }
void NSResponder::mouseExited(const NSEvent& event) { pass(&NSResponder::mouseExited, event); }
void NSResponder::scrollWheel(const NSEvent& event) { pass(&NSResponder::scrollWheel, event); }
void NSResponder::keyDown(const NSEvent& event) { pass(&NSResponder::keyDown, event); }
void NSResponder::keyUp(const NSEvent& event) { pass(&NSResponder::keyUp, event); }
void NSResponder::flagsChanged(const NSEvent& event) { pass(&NSResponder::flagsChanged, event); }

bool NSResponder::performKeyEquivalent(const NSEvent& /*event*/) { return false; }

void NSResponder::doCommandBySelector(const Selector& command) {
    if (command.perform(*this, nullptr)) return;
    if (const auto next = nextResponder()) next->doCommandBySelector(command);
}

void NSResponder::moveLeft(NSObject* sender) {
    if (const auto next = nextResponder()) next->moveLeft(sender);
}
void NSResponder::moveRight(NSObject* sender) {
    if (const auto next = nextResponder()) next->moveRight(sender);
}
void NSResponder::cancelOperation(NSObject* sender) {
    if (const auto next = nextResponder()) next->cancelOperation(sender);
}

}  // namespace zqcore::platform
