#pragma once

#include "Classes/AppleScript/RequestCommand/ASCompletion.h"
#include "Classes/AppleScript/RequestCommand/ASRequest.h"

namespace demo {

/// Asks a server to die, which it only hears if it was started with --allow-crash. No answer comes. Path
/// "debug/crash".
class CrashRequest : public zqcore::ASRequestDefaults<CrashRequest> {
  public:
    class RequestValue : public zqcore::JSONModel<RequestValue, zqcore::ASRequestModel> {
      public:
        class Body : public zqcore::JSONModel<Body> {
          public:
            /// One of `faults::kNames`; segv without it.
            std::optional<std::string> fault;
            /// Whether the log's outputs stop taking lines first, as on a disk that no longer answers.
            std::optional<bool> stallLog;
            ZQ_FIELDS(Body, fault, stallLog)
        };
        std::shared_ptr<Body> body;
        ZQ_FIELDS(RequestValue, requestId, client, path, body)
    };
    using ResponseValue = zqcore::ASCommonResponseModel;
    ZQ_REQUEST(CrashRequest, "debug/crash")
    ZQ_REQUEST_MIN_VERSION(std::nullopt)

    static void handle(const std::shared_ptr<RequestValue>& request, const zqcore::ASCompletion& completion);
};

}  // namespace demo
