#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Classes/AppleScript/RequestCommand/ASRequest.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Scripting/NSScriptCommand.h"

namespace zqcore {

/// The receiving end of a request: a script command with the request's JSON text as direct parameter and the
/// response's JSON text as result. It knows the request "info"; an application derives from it, takes its own
/// paths in `distributeToHandler` and registers the class with the scripting system.
/// Time: a handler has 60 seconds of the clock that only runs forward; then the answer is `responseTimeout`.
/// Threads: `performDefaultImplementation` and `distributeToHandler` on the scripting system's thread;
/// handlers on `queue()`, one at a time, so one that blocks holds up every command; completions from any.
/// Lifetime: held by `std::shared_ptr`; a command under way is kept until it has answered.
/// Failure: each has its error response and nothing throws; a handler or a `distributeToHandler` that throws
/// is told in the log and answered with `internalError`. A response that can't be encoded is an empty answer.
class ZQ_EXPORT ASBaseRequestCommand : public NSScriptCommand {
  public:
    using NSScriptCommand::NSScriptCommand;

    std::optional<std::string> performDefaultImplementation() override;

    /// Takes the request if `path` is one that is served here: then calls `handle` with the type and gives
    /// true. An override tests its own paths first and ends with the base's answer.
    virtual bool distributeToHandler(const std::string& path, const std::string& json);

    /// Suspends the command and serves the request on `queue()`.
    template <ASRequestHandler H>
    void handle(const std::string& json) {
        handleBy(handlerOf<H>(), json);
    }

    /// The serial queue of all commands of the process: "com.tessaradev.ASRequestCommand", user-initiated.
    [[nodiscard]] static const std::shared_ptr<DispatchQueue>& queue();

    /// A handler type without its type.
    struct Handler {
        /// The request's value, or null with a line in the log.
        std::shared_ptr<ASRequestModel> (*decode)(std::string_view json);
        void (*handle)(const std::shared_ptr<ASRequestModel>& request, const ASCompletion& completion);
    };
    template <ASRequestHandler H>
    [[nodiscard]] static const Handler& handlerOf() {
        using RequestValue = typename H::RequestValue;
        static constexpr Handler handler{
            [](std::string_view json) -> std::shared_ptr<ASRequestModel> {
                return RequestValue::fromJSONString(json);
            },
            [](const std::shared_ptr<ASRequestModel>& request, const ASCompletion& completion) {
                H::handle(std::static_pointer_cast<RequestValue>(request), completion);
            },
        };
        return handler;
    }

  protected:
    /// What every typed `handle` comes to: the overridable form of it.
    virtual void handleBy(const Handler& handler, const std::string& json);
};

}  // namespace zqcore
