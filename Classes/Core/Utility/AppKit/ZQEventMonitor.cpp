#include "Classes/Core/Utility/AppKit/ZQEventMonitor.h"

#include <utility>

namespace zqcore {

std::shared_ptr<ZQEventMonitor> ZQEventMonitor::localMonitorWithEvent(NSEventMask mask, Handler handler) {
    return makeObject<ZQEventMonitor>(MonitorType::local, mask, std::move(handler));
}

std::shared_ptr<ZQEventMonitor> ZQEventMonitor::globalMonitorWithEvent(NSEventMask mask, Handler handler) {
    return makeObject<ZQEventMonitor>(MonitorType::global, mask, std::move(handler));
}

std::shared_ptr<ZQEventMonitor> ZQEventMonitor::bothMonitorWithEvent(NSEventMask mask, Handler handler) {
    return makeObject<ZQEventMonitor>(MonitorType::both, mask, std::move(handler));
}

void ZQEventMonitor::start() {
    stop();
    if (type != MonitorType::global) {
        const std::weak_ptr<NSObject> weak = weak_from_this();
        localMonitor_ = NSEvent::addLocalMonitorForEventsMatchingMask(
            mask, [weak](const std::shared_ptr<NSEvent>& event) {
                if (const auto held = std::static_pointer_cast<ZQEventMonitor>(weak.lock()))
                    held->handler(event);
                return event;
            });
    }
    if (type != MonitorType::local)
        globalMonitor_ = NSEvent::addGlobalMonitorForEventsMatchingMask(mask, handler);
}

void ZQEventMonitor::stop() {
    if (const auto monitor = std::exchange(localMonitor_, nullptr)) NSEvent::removeMonitor(monitor);
    if (const auto monitor = std::exchange(globalMonitor_, nullptr)) NSEvent::removeMonitor(monitor);
}

}  // namespace zqcore
