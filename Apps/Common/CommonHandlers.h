#pragma once

#include <memory>
#include <vector>

#include "Classes/AppleScript/RequestCommand/ASCompletion.h"
#include "Classes/AppleScript/RequestCommand/CommonRequests.h"

// The handlers of the requests that either application serves. They run on the queue of all commands.
namespace demo {

using ServedHotkey = zqcore::CommonHotkeyFetchRequest::ResponseValue::Hotkey;

/// The hotkeys of this application, each with its identifier; the application defines it.
std::vector<std::shared_ptr<ServedHotkey>> servedHotkeys();

struct ServeLaunch : zqcore::CommonLaunchRequest {
    using CommonLaunchRequest::CommonLaunchRequest;
    static void handle(const std::shared_ptr<RequestValue>& request, const zqcore::ASCompletion& completion);
};

struct ServeHotkeyFetch : zqcore::CommonHotkeyFetchRequest {
    using CommonHotkeyFetchRequest::CommonHotkeyFetchRequest;
    static void handle(const std::shared_ptr<RequestValue>& request, const zqcore::ASCompletion& completion);
};

struct ServeHotkeyHandle : zqcore::CommonHotkeyHandleRequest {
    using CommonHotkeyHandleRequest::CommonHotkeyHandleRequest;
    static void handle(const std::shared_ptr<RequestValue>& request, const zqcore::ASCompletion& completion);
};

}  // namespace demo
