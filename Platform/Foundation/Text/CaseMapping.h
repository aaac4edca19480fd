#pragma once

#include <string>
#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

// The platform's case mappings: full ones, of no locale ("ß" becomes "SS"). ASCII is mapped without any
// Unicode data. Bytes that aren't UTF-8 become U+FFFD in a text that isn't ASCII. Any thread.

[[nodiscard]] ZQ_EXPORT std::string lowercased(std::string_view text);
[[nodiscard]] ZQ_EXPORT std::string uppercased(std::string_view text);

/// The first letter of each run up and the rest down. Digits, hyphens, underscores and blanks end a run;
/// apostrophes, points, colons and marks don't: "v2api don't" becomes "V2Api Don't".
[[nodiscard]] ZQ_EXPORT std::string capitalized(std::string_view text);

[[nodiscard]] constexpr char asciiLower(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}
[[nodiscard]] constexpr char asciiUpper(char c) noexcept {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
}

}  // namespace zqcore::platform
