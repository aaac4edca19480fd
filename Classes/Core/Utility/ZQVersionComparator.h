#pragma once

#include <string_view>

#include "Platform/Base/Export.h"
#include "Platform/Foundation/NSComparisonResult.h"

namespace zqcore {

/// The order of version texts such as "1.2", "1.0b2" or "v3.1-rc 4". A version falls into numbers, strings
/// and single separators; numbers compare by value, strings by character value, separators are all equal, and
/// a string is lower than anything else, the end included: 1.0b < 1.0 < 1.0.0. Every pair has an answer, and
/// the order is total. Threads: pure, any thread. Failure: none.
class ZQ_EXPORT ZQVersionComparator final {
  public:
    ZQVersionComparator() = delete;

    /// `NSOrderedAscending` if `versionA` is older than `versionB`, `NSOrderedDescending` if it is newer. A
    /// number that isn't ASCII digits or doesn't fit signed 64 bits counts as 0.
    [[nodiscard]] static NSComparisonResult compareVersion(std::string_view versionA,
                                                           std::string_view versionB);
};

}  // namespace zqcore
