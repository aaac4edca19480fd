#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace zqcore {

/// The name of a status in the table of its enumeration's cases, which count from 0; empty for a number that
/// is none of them.
template <class Status, std::size_t Count>
[[nodiscard]] constexpr std::string_view caseNameIn(const std::array<std::string_view, Count>& names,
                                                    Status status) noexcept {
    const auto index = static_cast<std::size_t>(status);
    return index < Count ? names[index] : std::string_view();
}

}  // namespace zqcore
