#pragma once

#include "Apps/Common/CommonHandlers.h"
#include "Classes/AppleScript/RequestCommand/ASCompletion.h"
#include "Classes/AppleScript/RequestCommand/OrbelHelperRequests.h"

// The helper's handlers, one for each request that is addressed to it alone. They run on the queue of all
// commands.
namespace demo {

struct ServeOpen : zqcore::OrbelHelperOpenRequest {
    using OrbelHelperOpenRequest::OrbelHelperOpenRequest;
    static void handle(const std::shared_ptr<RequestValue>& request, const zqcore::ASCompletion& completion);
};

struct ServeHotkey : zqcore::OrbelHelperHotkeyRequest {
    using OrbelHelperHotkeyRequest::OrbelHelperHotkeyRequest;
    static void handle(const std::shared_ptr<RequestValue>& request, const zqcore::ASCompletion& completion);
};

struct ServeToggle : zqcore::OrbelHelperToggleRequest {
    using OrbelHelperToggleRequest::OrbelHelperToggleRequest;
    static void handle(const std::shared_ptr<RequestValue>& request, const zqcore::ASCompletion& completion);
};

struct ServeSelectedText : zqcore::OrbelHelperSelectedTextRequest {
    using OrbelHelperSelectedTextRequest::OrbelHelperSelectedTextRequest;
    static void handle(const std::shared_ptr<RequestValue>& request, const zqcore::ASCompletion& completion);
};

struct ServeCurrentApp : zqcore::OrbelHelperCurrentAppRequest {
    using OrbelHelperCurrentAppRequest::OrbelHelperCurrentAppRequest;
    static void handle(const std::shared_ptr<RequestValue>& request, const zqcore::ASCompletion& completion);
};

}  // namespace demo
