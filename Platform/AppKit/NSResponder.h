#pragma once

#include <memory>

#include "Platform/Base/NSObject.h"
#include "Platform/Base/Selector.h"

namespace zqcore::platform {

class NSEvent;

/// What takes events and commands. Each operation passes on to the next responder unless a class overrides
/// it. Threads: main thread. Lifetime: the next responder is held weakly. Failure: an event that nobody takes
/// ends silently; an exception of an override is caught where the event came in, with one log line.
class ZQ_EXPORT NSResponder : public NSObject {
  public:
    /// The one set; a view without answers its controller, superview or window.
    [[nodiscard]] virtual std::shared_ptr<NSResponder> nextResponder() const;
    void setNextResponder(const std::shared_ptr<NSResponder>& responder);

    virtual void mouseDown(const NSEvent& event);
    virtual void mouseDragged(const NSEvent& event);
    virtual void mouseUp(const NSEvent& event);
    virtual void rightMouseDown(const NSEvent& event);
    virtual void rightMouseDragged(const NSEvent& event);
    virtual void rightMouseUp(const NSEvent& event);
    virtual void otherMouseDown(const NSEvent& event);
    virtual void otherMouseDragged(const NSEvent& event);
    virtual void otherMouseUp(const NSEvent& event);
    virtual void mouseMoved(const NSEvent& event);
    virtual void mouseEntered(const NSEvent& event);
    virtual void mouseExited(const NSEvent& event);
    virtual void scrollWheel(const NSEvent& event);
    virtual void keyDown(const NSEvent& event);
    virtual void keyUp(const NSEvent& event);
    virtual void flagsChanged(const NSEvent& event);

    /// Whether it took a command key; does not go up the chain.
    virtual bool performKeyEquivalent(const NSEvent& event);

    [[nodiscard]] virtual bool acceptsFirstResponder() const { return false; }
    /// Asked on the way in and out; false refuses.
    virtual bool becomeFirstResponder() { return true; }
    virtual bool resignFirstResponder() { return true; }

    /// Performs the command here if this object has it, else up the chain.
    virtual void doCommandBySelector(const Selector& command);
    virtual void moveLeft(NSObject* sender);
    virtual void moveRight(NSObject* sender);
    virtual void cancelOperation(NSObject* sender);

  private:
    void pass(void (NSResponder::*operation)(const NSEvent&), const NSEvent& event);

    std::weak_ptr<NSResponder> next_;
};

}  // namespace zqcore::platform
