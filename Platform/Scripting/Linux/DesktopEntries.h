#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zqcore::platform {

/// The path of the desktop entry of an application, or absent. Reads the environment and at most a few files;
/// any thread.
[[nodiscard]] std::optional<std::string> findDesktopEntry(std::string_view identifier);

}  // namespace zqcore::platform
