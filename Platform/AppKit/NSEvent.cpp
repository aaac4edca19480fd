#include "Platform/AppKit/NSEvent.h"

#include <algorithm>
#include <utility>

#include "Platform/AppKit/Display.h"
#include "Platform/AppKit/EventMonitors.h"
#include "Platform/AppKit/GuardedCall.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/Foundation/AXIsProcessTrusted.h"

namespace zqcore::platform {

namespace {

constexpr NSEventMask kKeys = NSEventMaskFromType(NSEventType::keyDown) |
                              NSEventMaskFromType(NSEventType::keyUp) |
                              NSEventMaskFromType(NSEventType::flagsChanged);

}  // namespace

std::shared_ptr<NSEvent> NSEvent::make(Fields fields) { return makeObject<NSEvent>(std::move(fields)); }

CGPoint NSEvent::mouseLocation() { return Display::current()->pointerLocation(); }

unsigned NSEvent::pressedMouseButtons() { return Display::current()->pressedButtons(); }

std::shared_ptr<NSObject> NSEvent::addLocalMonitorForEventsMatchingMask(NSEventMask mask,
                                                                        LocalHandler handler) {
    return EventMonitors::shared().addLocal(mask, std::move(handler));
}

std::shared_ptr<NSObject> NSEvent::addGlobalMonitorForEventsMatchingMask(NSEventMask mask,
                                                                         GlobalHandler handler) {
    return EventMonitors::shared().addGlobal(mask, std::move(handler));
}

void NSEvent::removeMonitor(const std::shared_ptr<NSObject>& monitor) {
    EventMonitors::shared().remove(monitor);
}

class EventMonitors::Monitor final : public NSObject {
  public:
    Monitor(NSEventMask eventMask, NSEvent::LocalHandler localHandler, NSEvent::GlobalHandler globalHandler)
        : mask(eventMask), local(std::move(localHandler)), global(std::move(globalHandler)) {}

    const NSEventMask mask;
    const NSEvent::LocalHandler local;
    const NSEvent::GlobalHandler global;
    bool removed = false;
};

EventMonitors& EventMonitors::shared() {
    static EventMonitors& monitors = *new EventMonitors;
    return monitors;
}

std::shared_ptr<NSObject> EventMonitors::addLocal(NSEventMask mask, NSEvent::LocalHandler handler) {
    if (!handler) return nullptr;
    return local_.emplace_back(makeObject<Monitor>(mask, std::move(handler), NSEvent::GlobalHandler{}));
}

std::shared_ptr<NSObject> EventMonitors::addGlobal(NSEventMask mask, NSEvent::GlobalHandler handler) {
    if (!handler) return nullptr;
    auto monitor = makeObject<Monitor>(mask, NSEvent::LocalHandler{}, std::move(handler));
    global_.push_back(monitor);
    globalsChanged();
    return monitor;
}

void EventMonitors::remove(const std::shared_ptr<NSObject>& token) {
    for (List* list : {&local_, &global_}) {
        const auto found = std::ranges::find(*list, token);
        if (found == list->end()) continue;
        // Ends after the list is whole again: foreign objects may end with its handler.
        const auto monitor = std::move(*found);
        monitor->removed = true;
        list->erase(found);
        if (list == &global_) globalsChanged();
        return;
    }
}

void EventMonitors::removeAll() {
    for (List* list : {&local_, &global_}) {
        for (const auto& monitor : std::exchange(*list, {})) monitor->removed = true;
    }
}

// The display watches the whole desktop only while somebody asks for it.
void EventMonitors::globalsChanged() {
    static_cast<void>(NSApplication::shared());
    Display::current()->setReportsOutsideEvents(!global_.empty());
}

std::shared_ptr<NSEvent> EventMonitors::filter(std::shared_ptr<NSEvent> event) {
    // A copy: handlers add and remove monitors.
    for (const auto& monitor : List(local_)) {
        if (monitor->removed || (monitor->mask & event->mask()) == 0) continue;
        guardedCall("local event monitor", [&] { event = monitor->local(event); });
        if (!event) return nullptr;
    }
    return event;
}

void EventMonitors::tellGlobal(const std::shared_ptr<NSEvent>& event) {
    // What is typed elsewhere may be a password; whether it may be heard is asked anew for each key.
    if ((event->mask() & kKeys) != 0 && !AXIsProcessTrusted()) return;
    for (const auto& monitor : List(global_)) {
        if (monitor->removed || (monitor->mask & event->mask()) == 0) continue;
        guardedCall("global event monitor", [&] { monitor->global(event); });
    }
}

}  // namespace zqcore::platform
