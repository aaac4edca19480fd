#pragma once

#include <functional>
#include <memory>

#include "Platform/AppKit/NSEvent.h"
#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"

namespace zqcore {

/// Watches events of this application, of the others, or of both; it never swallows one.
/// Threads: main thread. Lifetime: its end does not stop it. The owner calls `stop` first: until then a
/// global monitor goes on calling the handler, and a local one goes on passing events through. Failure: none.
class ZQ_EXPORT ZQEventMonitor final : public NSObject {
  public:
    enum class MonitorType { local, global, both };
    using Handler = std::function<void(const std::shared_ptr<NSEvent>&)>;

    /// Events that go to this application, before it handles them.
    [[nodiscard]] static std::shared_ptr<ZQEventMonitor> localMonitorWithEvent(NSEventMask mask,
                                                                               Handler handler);
    /// Events that go to other applications.
    [[nodiscard]] static std::shared_ptr<ZQEventMonitor> globalMonitorWithEvent(NSEventMask mask,
                                                                                Handler handler);
    [[nodiscard]] static std::shared_ptr<ZQEventMonitor> bothMonitorWithEvent(NSEventMask mask,
                                                                              Handler handler);

    /// A new monitor waits for this. Starting twice leaves one set of monitors.
    void start();
    void stop();

    const MonitorType type;
    const NSEventMask mask;
    const Handler handler;

    /// The running monitors; null while there is none.
    [[nodiscard]] const std::shared_ptr<NSObject>& localMonitor() const noexcept { return localMonitor_; }
    [[nodiscard]] const std::shared_ptr<NSObject>& globalMonitor() const noexcept { return globalMonitor_; }

  private:
    template <class T, class... Arguments>
    friend std::shared_ptr<T> platform::makeObject(Arguments&&...);
    ZQEventMonitor(MonitorType monitorType, NSEventMask eventMask, Handler call)
        : type(monitorType), mask(eventMask), handler(std::move(call)) {}

    std::shared_ptr<NSObject> localMonitor_;
    std::shared_ptr<NSObject> globalMonitor_;
};

}  // namespace zqcore
