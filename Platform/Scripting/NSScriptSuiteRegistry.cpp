#include "Platform/Scripting/NSScriptSuiteRegistry.h"

#include <utility>

#include "Platform/Dispatch/DispatchQueue.h"

namespace zqcore::platform {

const char* reason(ScriptingServeStatus status) noexcept {
    switch (status) {
        case ScriptingServeStatus::serving:
            return "";
        case ScriptingServeStatus::invalidIdentifier:
            return "the identifier makes no bus name";
        case ScriptingServeStatus::nameTaken:
            return "another process serves it";
        case ScriptingServeStatus::noBus:
            return "there is no session bus";
    }
    return "";
}

ScriptingServeStatus NSScriptSuiteRegistry::serve(const std::string& identifier, CommandFactory factory) {
    auto shared = std::make_shared<const CommandFactory>(std::move(factory));
    return ScriptingBus::current().serve(identifier, [shared](std::string text, ScriptingBus::Reply reply) {
        DispatchQueue::main()->async([shared, text = std::move(text), reply = std::move(reply)]() mutable {
            const auto command = !*shared ? nullptr : (*shared)({"request:", Value(std::move(text))});
            if (command) command->execute(std::move(reply));
        });
    });
}

void NSScriptSuiteRegistry::stopServing(const std::string& identifier) {
    ScriptingBus::current().stopServing(identifier);
}

void NSScriptSuiteRegistry::whenBusIsGone(std::function<void()> handler) {
    if (!handler) return ScriptingBus::current().whenGone(nullptr);
    ScriptingBus::current().whenGone(
        [handler = std::move(handler)] { DispatchQueue::main()->async(handler); });
}

}  // namespace zqcore::platform
