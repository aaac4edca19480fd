#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Scripting/NSScriptSuiteRegistry.h"

namespace demo {

/// What both demonstration servers have in common: they claim their identifier, hear notifications, run the
/// main loop, leave a report of a crash, and end with their log flushed: on SIGTERM or SIGINT, and one that
/// the bus started when that bus is gone.
struct ServerOptions {
    /// Paths that this run acts as if it had never heard of, as an older release would.
    std::vector<std::string> without;
    /// End when this process ends: for servers that the bus of a test or a demonstration started. 0 for none.
    int endWith = 0;
    /// Whether "debug/crash" is heard.
    bool allowCrash = false;
};

/// Takes the options above out of the words; false, with a message, for a word that `other` doesn't take
/// either. `other` is given an option's name and its value.
bool parseServerOptions(int argc, char** argv, ServerOptions& options, std::string_view help,
                        const std::function<bool(std::string_view name, std::string_view value)>& other);

/// Serves until a signal ends it. Gives the process's exit code: 0, or 1 if the identifier could not be
/// claimed.
int runServer(const ServerOptions& options, zqcore::NSScriptSuiteRegistry::CommandFactory makeCommand);

}  // namespace demo
