#pragma once

#include <memory>
#include <vector>

#include "Platform/AppKit/NSEvent.h"

namespace zqcore::platform {

/// The monitors of the process, in the order of adding. Main thread.
class EventMonitors {
  public:
    [[nodiscard]] static EventMonitors& shared();

    std::shared_ptr<NSObject> addLocal(NSEventMask mask, NSEvent::LocalHandler handler);
    std::shared_ptr<NSObject> addGlobal(NSEventMask mask, NSEvent::GlobalHandler handler);
    void remove(const std::shared_ptr<NSObject>& token);
    void removeAll();

    /// What the local monitors make of the event; null if one of them stopped it.
    [[nodiscard]] std::shared_ptr<NSEvent> filter(std::shared_ptr<NSEvent> event);
    void tellGlobal(const std::shared_ptr<NSEvent>& event);

  private:
    class Monitor;
    using List = std::vector<std::shared_ptr<Monitor>>;
    void globalsChanged();

    List local_;
    List global_;
};

}  // namespace zqcore::platform
