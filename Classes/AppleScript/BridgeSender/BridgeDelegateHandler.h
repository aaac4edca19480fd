#pragma once

#include <functional>
#include <string_view>

#include "Platform/Base/NSObject.h"
#include "Platform/Scripting/SBApplication.h"

namespace zqcore {

/// Passes an application's failed events to a closure. Threads: the closure is set before the delegate is
/// handed out, and runs on the event's thread. Lifetime: the application holds it weakly, so its maker keeps
/// it. Failure: without a closure an event's failure goes unheard.
class ZQ_EXPORT BridgeDelegateHandler final : public NSObject, public SBApplicationDelegate {
  public:
    std::function<void(const NSError&)> eventDidFailClosure;

    void eventDidFail(std::string_view, const NSError& error) override {
        if (eventDidFailClosure) eventDidFailClosure(error);
    }
};

}  // namespace zqcore
