#pragma once

#include <string>
#include <string_view>

namespace zqcore::platform {

inline constexpr const char* kScriptingInterface = "com.tessara.ZQCore.Scripting";

/// What another process's scripting object can do.
struct ScriptingCommands {
    /// `request(s) → s`.
    bool request = false;
    /// `exchange(v) → v`, which our own processes have beside it.
    bool exchange = false;
};

/// The path of an identifier's scripting object: dots as slashes, every other character that no path may hold
/// as `_`.
[[nodiscard]] std::string objectPathForIdentifier(std::string_view identifier);

/// Reads the commands out of an introspection document (D-Bus specification, "Introspection Data Format").
[[nodiscard]] ScriptingCommands commandsInDocument(std::string_view document);

}  // namespace zqcore::platform
