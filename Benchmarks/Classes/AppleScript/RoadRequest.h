#pragma once

#include "Classes/AppleScript/RequestCommand/ASRequest.h"

namespace zqcore::bench {

inline constexpr const char* kOurServer = "com.example.road-ours";
inline constexpr const char* kBareServer = "com.example.road-bare";
inline constexpr const char* kBarePath = "/com/example/road";
inline constexpr const char* kBareInterface = "com.example.Road";

/// A request with one text, answered by one with the same text.
class RoadRequest : public ASRequestDefaults<RoadRequest> {
  public:
    class Body : public JSONModel<Body> {
      public:
        std::optional<std::string> text;
        ZQ_FIELDS(Body, text)
    };
    class RequestValue : public JSONModel<RequestValue, ASRequestModel> {
      public:
        std::shared_ptr<Body> body;
        ZQ_FIELDS(RequestValue, requestId, client, path, body)
    };
    class ResponseValue : public JSONModel<ResponseValue, ASResponseModel> {
      public:
        std::shared_ptr<Body> body;
        ZQ_FIELDS(ResponseValue, requestId, server, error, body)
    };
    ZQ_REQUEST(RoadRequest, "road")
    ZQ_REQUEST_MIN_VERSION(std::nullopt)
};

}  // namespace zqcore::bench
