#pragma once

#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// Takes the lines of `NSLog`, on the thread that reports; several threads may report at once.
using NSLogHandler = void (*)(std::string_view line);

/// Reports what went wrong inside the platform layer, which knows no logger: one line, on standard error
/// unless a handler is installed. Any thread; a handler that itself reports gets that line on standard error.
ZQ_EXPORT void NSLog(std::string_view line);

/// Sends the lines to `handler` from now on, and to the first one also the lines (32 at most) that were
/// reported before; a null pointer brings standard error back. Any thread.
ZQ_EXPORT void setNSLogHandler(NSLogHandler handler);

}  // namespace zqcore::platform
