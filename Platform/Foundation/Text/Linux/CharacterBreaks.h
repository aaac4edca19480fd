#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace zqcore::platform {

/// Fills `breaks` with the ends of the first characters of `text`, as byte offsets, and gives how many: at
/// least one for a text that isn't empty. Any thread.
[[nodiscard]] std::size_t findCharacterBreaks(std::string_view text, std::span<std::size_t> breaks);

}  // namespace zqcore::platform
