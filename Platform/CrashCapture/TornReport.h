#pragma once

#include <string>
#include <string_view>

#include "Platform/Base/Value.h"

namespace zqcore::platform::crash {

/// The beginning of a JSON text made whole: cut behind the last value that is complete, and every open array
/// and object closed. The empty text if nothing has begun. Any thread.
[[nodiscard]] std::string closeTornJSON(std::string_view text);

/// A stored report as dictionary. One that is torn (its end mark is missing) or damaged gives what can be
/// read of it and is marked "incomplete"; the "timestamp" becomes a text. Any thread.
[[nodiscard]] Value::Dictionary parseStoredReport(std::string_view text);

}  // namespace zqcore::platform::crash
