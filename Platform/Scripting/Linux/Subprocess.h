#pragma once

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

/// Runs `arguments` (the program's path first) to its end: writes `input` to its standard input, reads both
/// its outputs, reaps it. What it leaves running in the background is not waited for. It inherits the
/// environment, with what `environment` ("NAME=VALUE") sets in place of the old, and no descriptor but the
/// three. Failure: an error of NSPOSIXErrorDomain if it can't be started, or writes more than 128 MiB (it is
/// killed then). Threads: blocks the calling thread, which must have SIGPIPE blocked.
[[nodiscard]] std::expected<SubprocessResult, NSError> runSubprocess(
    const std::vector<std::string>& arguments, const std::vector<std::string>& environment,
    std::string_view input);

}  // namespace zqcore::platform
