#pragma once

#include "Platform/Base/Value.h"

namespace zq {

/// Writes `value` as one line of JSON to standard output. With `brief`, texts of more than 100 bytes are cut
/// to their first 24 and their size. False if standard output takes no more.
bool printJSON(zqcore::Value value, bool brief = false);

}  // namespace zq
