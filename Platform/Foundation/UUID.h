#pragma once

#include <string>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// A fresh random UUID (RFC 9562, version 4) as text: 8-4-4-4-12 hexadecimal digits in upper case. The bits
/// come from the system's random source. Any thread.
[[nodiscard]] ZQ_EXPORT std::string makeUUIDString();

}  // namespace zqcore::platform
