#pragma once

#include <compare>
#include <cstddef>

namespace zqcore::platform {

/// A stretch of a UTF-8 text, as byte offsets; `end` is behind its last byte.
struct TextRange {
    std::size_t begin = 0;
    std::size_t end = 0;

    [[nodiscard]] constexpr std::size_t size() const noexcept { return end - begin; }
    friend auto operator<=>(const TextRange&, const TextRange&) = default;
};

}  // namespace zqcore::platform
