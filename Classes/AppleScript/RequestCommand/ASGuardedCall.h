#pragma once

#include <functional>
#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore {

/// Runs the application's own code, which any process can bring to run: what it throws is told in the log, as
/// "NAME 异常: REASON", and must not take this process down. Gives whether it came to its end. Any thread.
[[nodiscard]] ZQ_EXPORT bool guardedCall(std::string_view name, const std::function<void()>& action);

}  // namespace zqcore
