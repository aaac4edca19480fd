#include "Classes/AppleScript/RequestCommand/ASModel.h"

namespace zqcore {

std::shared_ptr<ASCommonResponseModel> ASCommonResponseModel::make(ASError::Code code,
                                                                   std::optional<std::string> message) {
    auto response = make();
    response->server = ASClient::current();
    response->error = ASError::make();
    response->error->code = code;
    response->error->message = message ? std::move(message) : std::string(zqcore::message(code));
    return response;
}

}  // namespace zqcore
