#pragma once

#include "Classes/AppleScript/RequestCommand/ASCompletion.h"
#include "Classes/AppleScript/RequestCommand/CommonRequests.h"
#include "Classes/AppleScript/RequestCommand/OrbelOCRRequest.h"
#include "Classes/AppleScript/RequestCommand/OrbelTranslateRequest.h"

// The main application's handlers, one for each request that is addressed to it. They run on the queue of all
// commands.
namespace demo {

struct ServeTranslate : zqcore::OrbelTranslateRequest {
    using OrbelTranslateRequest::OrbelTranslateRequest;
    static void handle(const std::shared_ptr<RequestValue>& request, const zqcore::ASCompletion& completion);
};

struct ServeOCR : zqcore::OrbelOCRRequest {
    using OrbelOCRRequest::OrbelOCRRequest;
    static void handle(const std::shared_ptr<RequestValue>& request, const zqcore::ASCompletion& completion);
};

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
