#include "Classes/AppleScript/RequestCommand/ASRequestCarrier.h"

namespace zqcore {

ASRequestCarrier::Answer ASRequestCarrier::decodeAndFill(std::string_view json,
                                                         const std::source_location& where) const {
    const auto response = operations_->decodeAndFill(request_.get(), json, where);
    if (!response) return {};
    return {true, response->error != nullptr, response->server ? response->server->version : std::nullopt};
}

}  // namespace zqcore
