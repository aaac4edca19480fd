#pragma once

#include <string>
#include <string_view>

#include "Classes/AppleScript/RequestCommand/CommonRequests.h"
#include "Classes/AppleScript/RequestCommand/OrbelHelperRequests.h"
#include "Classes/AppleScript/RequestCommand/OrbelOCRRequest.h"
#include "Classes/AppleScript/RequestCommand/OrbelTranslateRequest.h"

namespace zq {

/// A request whose path no type of the catalogue has: it goes out as it was given, and its answer is read as
/// it comes.
class OtherRequest : public zqcore::ASRequestDefaults<OtherRequest> {
  public:
    class RequestValue : public zqcore::JSONModel<RequestValue, zqcore::ASRequestModel> {
      public:
        std::optional<zqcore::Value> body;
        ZQ_FIELDS(RequestValue, requestId, client, path, body)
    };
    class ResponseValue : public zqcore::JSONModel<ResponseValue, zqcore::ASResponseModel> {
      public:
        std::optional<zqcore::Value> body;
        ZQ_FIELDS(ResponseValue, requestId, server, error, body)
    };
    ZQ_REQUEST(OtherRequest, "")
    ZQ_REQUEST_MIN_VERSION(std::nullopt)
};

namespace detail {

template <class Visitor, class R, class... Others>
auto visitFrom(std::string_view path, Visitor& visitor) {
    if (path == R::path()) return visitor.template operator()<R>();
    if constexpr (sizeof...(Others) > 0) {
        return visitFrom<Visitor, Others...>(path, visitor);
    } else {
        return visitor.template operator()<OtherRequest>();
    }
}

}  // namespace detail

/// Calls `visitor` with the request type of `path`. "launch" has two types; which of them is told by
/// `distributed`.
template <class Visitor>
auto withRequestType(std::string_view path, bool distributed, Visitor visitor) {
    using namespace zqcore;
    if (distributed && path == DistributedLaunchNotification::path()) {
        return visitor.template operator()<DistributedLaunchNotification>();
    }
    return detail::visitFrom<Visitor, OrbelTranslateRequest, OrbelOCRRequest, OrbelHelperOpenRequest,
                             OrbelHelperHotkeyRequest, OrbelHelperToggleRequest,
                             OrbelHelperSelectedTextRequest, OrbelHelperCurrentAppRequest, CommonInfoRequest,
                             CommonLaunchRequest, CommonHotkeyFetchRequest, CommonHotkeyHandleRequest>(
        path, visitor);
}

}  // namespace zq
