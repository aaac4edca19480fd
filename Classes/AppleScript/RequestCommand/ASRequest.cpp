#include "Classes/AppleScript/RequestCommand/ASRequest.h"

#include "Platform/Foundation/UUID.h"

namespace zqcore::requestdetail {

void prepare(ASRequestModel& value, std::string_view path) {
    if (!value.requestId) value.requestId = makeUUIDString();
    if (!value.client) value.client = ASClient::current();
    if (!value.path) value.path = std::string(path);
}

std::string describe(std::string_view path, std::string_view appId, std::string_view status,
                     const std::optional<std::string>& requestString,
                     const std::optional<std::string>& responseString) {
    constexpr std::string_view absent = "(nil)";
    const std::string_view request = requestString ? std::string_view(*requestString) : absent;
    const std::string_view response = responseString ? std::string_view(*responseString) : absent;
    std::string text;
    text.reserve(request.size() + response.size() + path.size() + appId.size() + 80);
    text.append("请求回调 [").append(appId).append("] ").append(path);
    text.append("\n[status]: ").append(status);
    text.append("\n[request]:\n").append(request);
    text.append("\n[response]:\n").append(response);
    return text;
}

std::optional<std::string> SettableVersion::get() const {
    const std::lock_guard lock(mutex_);
    return version_;
}

void SettableVersion::set(std::optional<std::string> version) {
    const std::lock_guard lock(mutex_);
    version_ = std::move(version);
}

}  // namespace zqcore::requestdetail
