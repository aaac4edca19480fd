#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "Platform/Base/Export.h"
#include "Platform/Foundation/NSComparisonResult.h"

namespace zqcore::platform {

/// The indices 0 to `count` - 1 in ascending order of what they stand for, equal ones as they were. A
/// comparator that contradicts itself gives some order of all of them, never a fault. O(n log n)
/// comparisons. Threads: pure.
[[nodiscard]] ZQ_EXPORT std::vector<std::size_t> sortedOrder(
    std::size_t count, const std::function<NSComparisonResult(std::size_t, std::size_t)>& comparator);

}  // namespace zqcore::platform
