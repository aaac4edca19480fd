#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zqcore::platform {

/// What an application's desktop entry says (Desktop Entry Specification), escapes undone. A text that isn't
/// there is empty.
struct DesktopEntry {
    std::string path;
    std::string name;
    std::string icon;
    std::string exec;
    std::string workingFolder;
};

/// The desktop entry of an application, or absent. Reads the environment and at most a few files; any thread.
[[nodiscard]] std::optional<DesktopEntry> findDesktopEntry(std::string_view identifier);

/// The program of `entry` and its arguments when it is started without files (section "The Exec key"). Empty
/// without one, and for one that mustn't be run: a quote that doesn't end, a field code that there isn't.
[[nodiscard]] std::vector<std::string> commandLine(const DesktopEntry& entry);

}  // namespace zqcore::platform
