#pragma once

#include <functional>
#include <memory>
#include <string>

#include "Platform/Base/Export.h"
#include "Platform/Scripting/NSScriptCommand.h"
#include "Platform/Scripting/ScriptingBus.h"

namespace zqcore::platform {

/// Why an identifier isn't served, in words for people; empty where it is.
[[nodiscard]] ZQ_EXPORT const char* reason(ScriptingServeStatus status) noexcept;

/// The serving end of scripting: an application registers the command behind `request:` once and claims its
/// identifier. Threads: both operations from any; commands are made and run on the main thread, so the
/// process runs its main loop; answers may come from any thread. Lifetime: serving lasts until `stopServing`
/// or the end of the process, and is taken up again after the bus was lost, or when the process ends that
/// took the name first. A command is held until it has
/// answered. Failure: `serve` tells it. A factory that gives no command answers with nothing.
///
///     NSScriptSuiteRegistry::serve("com.example.app", [](NSScriptCommandDescription description) {
///         return makeObject<MyRequestCommand>(std::move(description));
///     });
class ZQ_EXPORT NSScriptSuiteRegistry final {
  public:
    using CommandFactory = std::function<std::shared_ptr<NSScriptCommand>(NSScriptCommandDescription)>;

    NSScriptSuiteRegistry() = delete;

    /// Claims `identifier` and runs a command of `factory` for each `request:` that arrives. Blocks for one
    /// round trip to the bus.
    static ScriptingServeStatus serve(const std::string& identifier, CommandFactory factory);
    static void stopServing(const std::string& identifier);
    /// Calls `handler` on the main thread when the bus went and none came up in its place for 1.5 seconds, as
    /// at the end of a session. A process that only serves may end then; one that stays is served again by
    /// a bus that comes later. An empty handler ends it.
    static void whenBusIsGone(std::function<void()> handler);
};

}  // namespace zqcore::platform
