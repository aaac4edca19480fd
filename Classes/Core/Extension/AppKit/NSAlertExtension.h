#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/AppKit/NSAlert.h"
#include "Platform/Base/Export.h"

namespace zqcore {

/// Asks by an alert of the warning style, over the window or, without one, in the middle of the screen until
/// it is answered. The completion gets 1000 for the first button, 1001 for the second and so on.
/// Threads: main thread.
ZQ_EXPORT void zq_show(const std::shared_ptr<NSWindow>& window, const std::optional<std::string>& title,
                       const std::optional<std::string>& info,
                       const std::optional<std::vector<std::string>>& buttons,
                       std::function<void(NSAlertResponse)> completion);

}  // namespace zqcore
