#pragma once

#include <string>

namespace zqcore::platform::crash {

/// Whether a process that is just crashing still writes the report at `path`. Any thread.
[[nodiscard]] bool isBeingWritten(const std::string& path);

}  // namespace zqcore::platform::crash
