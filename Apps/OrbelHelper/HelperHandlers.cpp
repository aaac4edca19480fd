#include "Apps/OrbelHelper/HelperHandlers.h"

#include <string>
#include <utility>

#include "Apps/Common/ServerCommand.h"
#include "Apps/OrbelHelper/HelperState.h"
#include "Classes/Log/Log/ZQLog.h"

namespace demo {

using namespace zqcore;
using Code = ASError::Code;

void ServeOpen::handle(const std::shared_ptr<RequestValue>& request, const ASCompletion& completion) {
    if (!request->body || !request->body->page) return refuse(completion, Code::invalidParameter, "no page");
    auto& state = HelperState::shared();
    const auto before = std::exchange(state.page, *request->body->page);
    ZQLogInfo([&] {
        return "page " + std::string(caseText(state.page)) + " is open, " + std::string(caseText(before)) +
               " was before";
    });
    completion(ResponseValue::make());
}

void ServeHotkey::handle(const std::shared_ptr<RequestValue>& request, const ASCompletion& completion) {
    using Action = RequestValue::HotkeyAction;
    auto& state = HelperState::shared();
    const auto action = request->body && request->body->action ? *request->body->action : Action::unknown;
    if (action == Action::unregisterAll) {
        state.hotkeys.clear();
        return completion(ResponseValue::make());
    }
    if (action == Action::unknown) return refuse(completion, Code::invalidParameter, "unsupported action");

    // All or nothing: one that can't be registered leaves the others as they were.
    auto changed = state.hotkeys;
    if (!request->body->hotkeys) return refuse(completion, Code::invalidParameter, "no hotkeys");
    for (const auto& hotkey : *request->body->hotkeys) {
        if (!hotkey->identifier || hotkey->identifier->empty()) {
            return refuse(completion, Code::invalidParameter, "a hotkey without identifier");
        }
        if (action == Action::unregister) {
            changed.erase(*hotkey->identifier);
            continue;
        }
        if (!hotkey->key || hotkey->key->empty()) {
            return refuse(completion, Code::invalidParameter,
                          "hotkey " + *hotkey->identifier + " has no key");
        }
        auto kept = HelperState::Hotkey::make();
        kept->identifier = hotkey->identifier;
        kept->key = hotkey->key;
        kept->modifiers = hotkey->modifiers;
        kept->doubledModifiers = hotkey->doubledModifiers;
        changed[*hotkey->identifier] = std::move(kept);
    }
    state.hotkeys = std::move(changed);
    ZQLogInfo([&] { return std::to_string(state.hotkeys.size()) + " hotkeys are registered"; });
    completion(ResponseValue::make());
}

void ServeToggle::handle(const std::shared_ptr<RequestValue>&, const ASCompletion& completion) {
    auto& state = HelperState::shared();
    state.enabled = !state.enabled;
    auto response = ResponseValue::make();
    response->body = ResponseValue::Body::make();
    response->body->state = state.enabled;
    completion(std::move(response));
}

void ServeSelectedText::handle(const std::shared_ptr<RequestValue>& request, const ASCompletion& completion) {
    using Status = ResponseValue::Status;
    const auto& state = HelperState::shared();
    const bool byLocation = request->body && request->body->location;
    auto response = ResponseValue::make();
    response->body = ResponseValue::Body::make();
    response->body->app = state.currentApp;
    response->body->text = state.selectedText;
    if (state.selectedText) {
        response->body->status =
            byLocation ? Status::successByLocationElement : Status::successByFocusedElement;
    } else {
        response->body->status = byLocation ? Status::locationElementNoText : Status::focusedElementNoText;
    }
    completion(std::move(response));
}

void ServeCurrentApp::handle(const std::shared_ptr<RequestValue>&, const ASCompletion& completion) {
    const auto& state = HelperState::shared();
    if (!state.currentApp)
        return refuse(completion, Code::internalError, "no application is known to be in front");
    auto response = ResponseValue::make();
    response->body = ResponseValue::Body::make();
    response->body->app = state.currentApp;
    completion(std::move(response));
}

std::vector<std::shared_ptr<ServedHotkey>> servedHotkeys() {
    std::vector<std::shared_ptr<ServedHotkey>> hotkeys;
    for (const auto& [identifier, hotkey] : HelperState::shared().hotkeys) hotkeys.push_back(hotkey);
    return hotkeys;
}

}  // namespace demo
