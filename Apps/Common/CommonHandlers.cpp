#include "Apps/Common/CommonHandlers.h"

#include <algorithm>

#include "Apps/Common/ServerCommand.h"
#include "Classes/Log/Log/ZQLog.h"

namespace demo {

using namespace zqcore;
using Code = ASError::Code;

void ServeLaunch::handle(const std::shared_ptr<RequestValue>&, const ASCompletion& completion) {
    completion(ResponseValue::make());
}

void ServeHotkeyFetch::handle(const std::shared_ptr<RequestValue>& request, const ASCompletion& completion) {
    const auto& body = request->body;
    const bool all = body && body->fetchAll.value_or(false);
    if (!all && !(body && body->identifiers)) {
        return refuse(completion, Code::invalidParameter, "neither fetchAll nor identifiers");
    }
    auto response = ResponseValue::make();
    response->body = ResponseValue::Body::make();
    auto& found = response->body->hotkeys.emplace(servedHotkeys());
    if (!all) {
        std::erase_if(found, [&](const auto& hotkey) {
            return std::ranges::find(*body->identifiers, *hotkey->identifier) == body->identifiers->end();
        });
    }
    completion(std::move(response));
}

void ServeHotkeyHandle::handle(const std::shared_ptr<RequestValue>& request, const ASCompletion& completion) {
    const auto& hotkey = request->body ? request->body->hotkey : nullptr;
    const auto hotkeys = servedHotkeys();
    const bool known = hotkey && hotkey->identifier && std::ranges::any_of(hotkeys, [&](const auto& one) {
                           return one->identifier == hotkey->identifier;
                       });
    if (!known) return refuse(completion, Code::invalidParameter, "that hotkey is not registered");
    ZQLogInfo([&] { return "hotkey " + *hotkey->identifier + " was pressed"; });
    completion(ResponseValue::make());
}

}  // namespace demo
