#pragma once

#include <span>
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

/// An option of one server alone, which takes a value.
struct ServerOption {
    std::string_view name;
    void (*take)(std::string_view value);
};

/// Takes the options above and `others` out of the words; false, with a message, for any other word, and for
/// a value that is missing or none of the option's. Where they are asked for it prints `help`, with the exit
/// codes of every server, or the version, and ends.
bool parseServerOptions(int argc, char** argv, ServerOptions& options, std::string_view help,
                        std::span<const ServerOption> others = {});

/// Serves until a signal ends it. Gives the process's exit code: 0, or 1 if the identifier could not be
/// claimed.
int runServer(const ServerOptions& options, zqcore::NSScriptSuiteRegistry::CommandFactory makeCommand);

}  // namespace demo
