#pragma once

#include <optional>
#include <string>

#include "Platform/Base/Export.h"
#include "Platform/JavaScript/JSValue.h"

namespace zqcore {

// Checked reads of a script's value: each gives the value if it is of that kind, and is absent for every
// other one and for null and undefined. Nothing is converted from kind to kind. Threads: the value's.

/// Whether the value is neither null nor undefined.
[[nodiscard]] ZQ_EXPORT bool isValid(const JSValue& value);

[[nodiscard]] ZQ_EXPORT std::optional<bool> safeToBoolean(const JSValue& value);
[[nodiscard]] ZQ_EXPORT std::optional<double> safeToNumber(const JSValue& value);
[[nodiscard]] ZQ_EXPORT std::optional<std::string> safeToString(const JSValue& value);
/// Arrays and functions are objects too.
[[nodiscard]] ZQ_EXPORT std::optional<Value::Dictionary> safeToDictionary(const JSValue& value);
[[nodiscard]] ZQ_EXPORT std::optional<Value::Array> safeToArray(const JSValue& value);
[[nodiscard]] ZQ_EXPORT std::optional<Value> safeToObject(const JSValue& value);

}  // namespace zqcore
