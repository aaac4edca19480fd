#pragma once

#include <sys/types.h>

#include <expected>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Base/NSError.h"

namespace zqcore::platform {

/// How a subprocess ended and what it said.
struct SubprocessResult {
    enum class End { exited, killed, unknown };

    End end = End::unknown;
    /// The exit status, or the number of the signal.
    int number = 0;
    std::string output;
    /// The last part of standard error.
    std::string lastErrors;
};

/// Runs `arguments` (the program first, looked for on the PATH unless it is a path) to its end: writes
/// `input` to its standard input, reads both its outputs, reaps it. What it leaves running in the background
/// is not waited for. It inherits the environment, with what `environment` ("NAME=VALUE") sets in place of
/// the old, and no descriptor but the three. Failure: an error of NSPOSIXErrorDomain if it can't be started,
/// or writes more than 128 MiB (it is killed then). Threads: blocks the calling thread, which must have
/// SIGPIPE blocked.
[[nodiscard]] std::expected<SubprocessResult, NSError> runSubprocess(
    const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
    std::string_view input);

/// Starts `arguments` as `runSubprocess` does, but in a session of its own and without our standard streams,
/// so that nobody who waits for the end of ours waits for it. An empty `workingFolder` is this process's.
/// Gives the child's number; it is the caller's to reap. Any thread.
[[nodiscard]] std::expected<pid_t, NSError> startDetached(const std::vector<std::string>& arguments,
                                                          const std::vector<std::string>& environment,
                                                          const std::string& workingFolder);

}  // namespace zqcore::platform
