#include "Classes/AppleScript/RequestCommand/ASRequestCarrier.h"

#include "Classes/Log/Log/ZQLog.h"

namespace zqcore {

std::optional<std::string> ASRequestCarrier::encode(const std::source_location& where) const {
    if (request_) return operations_->value(request_.get()).encodeToJSONString(where);
    ZQLogError([&] { return "request 为空: path=" + std::string(path()); });
    return std::nullopt;
}

ASRequestCarrier::Answer ASRequestCarrier::decodeAndFill(std::string_view json,
                                                         const std::source_location& where) const {
    if (!request_) return {};
    const auto response = operations_->decodeAndFill(request_.get(), json, where);
    if (!response) return {};
    return {true, response->error != nullptr, response->server ? response->server->version : std::nullopt};
}

}  // namespace zqcore
