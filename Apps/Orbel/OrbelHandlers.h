#pragma once

#include "Apps/Common/CommonHandlers.h"
#include "Classes/AppleScript/RequestCommand/ASCompletion.h"
#include "Classes/AppleScript/RequestCommand/OrbelOCRRequest.h"
#include "Classes/AppleScript/RequestCommand/OrbelTranslateRequest.h"

// The main application's handlers, one for each request that is addressed to it alone. They run on the queue
// of all commands.
namespace demo {

struct ServeTranslate : zqcore::OrbelTranslateRequest {
    using OrbelTranslateRequest::OrbelTranslateRequest;
    static void handle(const std::shared_ptr<RequestValue>& request, const zqcore::ASCompletion& completion);
};

struct ServeOCR : zqcore::OrbelOCRRequest {
    using OrbelOCRRequest::OrbelOCRRequest;
    static void handle(const std::shared_ptr<RequestValue>& request, const zqcore::ASCompletion& completion);
};

}  // namespace demo
