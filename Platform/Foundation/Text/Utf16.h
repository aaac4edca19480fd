#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

// The platform's texts count in UTF-16 units. A byte that isn't UTF-8 counts as one U+FFFD. Any thread.

/// How many UTF-16 units `text` has.
[[nodiscard]] ZQ_EXPORT std::size_t utf16Length(std::string_view text) noexcept;

/// `text` in UTF-16.
[[nodiscard]] ZQ_EXPORT std::u16string toUTF16(std::string_view text);

/// `text` in UTF-8; a surrogate without its partner becomes U+FFFD.
[[nodiscard]] ZQ_EXPORT std::string fromUTF16(std::u16string_view text);

/// Appends `scalar` to `text` in UTF-8; U+FFFD for what is no scalar.
ZQ_EXPORT void appendScalar(std::string& text, char32_t scalar);

}  // namespace zqcore::platform
