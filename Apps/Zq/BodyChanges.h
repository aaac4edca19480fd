#pragma once

#include "Platform/Base/Value.h"

namespace zq {

/// Tells on standard error, a line each, what of the body `given` is not in `sent`, the same body as the
/// request reads and writes it: fields that it doesn't know, and values that became another, as an unknown
/// case of an enumeration becomes its default.
void complainOfChanges(const zqcore::Value& given, const zqcore::Value& sent);

}  // namespace zq
