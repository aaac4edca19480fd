#pragma once

namespace zqcore::platform {

/// The answer of a three-way comparison: the left side is lower, equal or greater.
enum NSComparisonResult : int { NSOrderedAscending = -1, NSOrderedSame = 0, NSOrderedDescending = 1 };

}  // namespace zqcore::platform
