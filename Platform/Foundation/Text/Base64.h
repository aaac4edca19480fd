#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// The standard base64 of RFC 4648 section 4: `=` padding, no line breaks. Bytes in, text out; any thread.
[[nodiscard]] ZQ_EXPORT std::string encodeBase64(std::string_view bytes);

/// Reads base64, passing over every character outside `A-Z a-z 0-9 + / =`. Absent if the characters that
/// remain are no multiple of four, or if a letter follows a `=`. Unused low bits aren't checked, and padding
/// alone gives no bytes. Any thread.
[[nodiscard]] ZQ_EXPORT std::optional<std::string> decodeBase64(std::string_view text);

}  // namespace zqcore::platform
