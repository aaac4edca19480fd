#include "Classes/AppleScript/RequestCommand/CommonRequests.h"

namespace zqcore {

ZQ_REQUEST_MIN_VERSION_STORE(CommonInfoRequest)
ZQ_REQUEST_MIN_VERSION_STORE(CommonLaunchRequest)
ZQ_REQUEST_MIN_VERSION_STORE(CommonHotkeyFetchRequest)
ZQ_REQUEST_MIN_VERSION_STORE(CommonHotkeyHandleRequest)
ZQ_REQUEST_MIN_VERSION_STORE(DistributedLaunchNotification)

void CommonInfoRequest::handle(const std::shared_ptr<RequestValue>&, const ASCompletion& completion) {
    auto response = ASCommonResponseModel::make();
    response->server = ASClient::current();
    completion(std::move(response));
}

}  // namespace zqcore
