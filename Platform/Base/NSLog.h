#pragma once

#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// Takes the lines of `NSLog`. It is called on the thread that reports, never two at once.
using NSLogHandler = void (*)(std::string_view line);

/// Reports what went wrong inside the platform layer, which knows no logger: one line, on standard error
/// unless a handler is installed. Any thread; a handler that itself reports gets that line on standard error.
ZQ_EXPORT void NSLog(std::string_view line);

/// Sends the lines to `handler` from now on; a null pointer brings standard error back. Any thread.
ZQ_EXPORT void setNSLogHandler(NSLogHandler handler) noexcept;

}  // namespace zqcore::platform
