#pragma once

#include <string>

#include "Platform/Scripting/ScriptingBus.h"

namespace zqcore::platform {

/// Whether a process serves the bundle identifier now; false without a bus. One round trip at most. Any
/// thread.
[[nodiscard]] inline bool nameHasOwner(const std::string& identifier) {
    return ScriptingBus::current().nameHasOwner(identifier);
}

/// Whether the session bus can start an application for the bundle identifier; false without a bus. One round
/// trip; starts nothing. Any thread.
[[nodiscard]] inline bool isActivatable(const std::string& identifier) {
    return ScriptingBus::current().isActivatable(identifier);
}

}  // namespace zqcore::platform
