#pragma once

#include <string>

#include "Platform/Base/Value.h"

namespace zqcore::platform::crash {

/// The "system" members of a report that stay the same while the process runs: the machine, the operating
/// system and the application. Any thread; not for signal handlers.
[[nodiscard]] Value::Dictionary systemFacts();

/// The name that reports go by: the main bundle's, else the executable's. Without slashes. Any thread.
[[nodiscard]] std::string reportName();

}  // namespace zqcore::platform::crash
