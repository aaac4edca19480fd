#pragma once

#include <span>
#include <string_view>

namespace zqcore::platform {

/// One declared type. Lists are separated by blanks.
struct UTTypeEntry {
    std::string_view identifier;
    std::string_view parents;
    std::string_view extensions;
    std::string_view mimeTypes;
};

/// All that are known without the shared MIME database.
[[nodiscard]] std::span<const UTTypeEntry> knownTypes() noexcept;

}  // namespace zqcore::platform
