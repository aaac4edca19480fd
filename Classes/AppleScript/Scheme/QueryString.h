#pragma once

#include <map>
#include <string>

#include "Platform/Base/Export.h"
#include "Platform/Base/Value.h"

namespace zqcore {

/// The query text of a URL: "a=1&b=2", keys in ascending order, keys and values percent-encoded. A nested
/// dictionary gives `key[member]=...`, an array `key[]=...`, a boolean 1 or 0; an empty dictionary the empty
/// text. Any thread; no failure.
[[nodiscard]] ZQ_EXPORT std::string toQueryString(const Value::Dictionary& dictionary);
[[nodiscard]] ZQ_EXPORT std::string toQueryString(const std::map<std::string, std::string>& parameters);

}  // namespace zqcore
