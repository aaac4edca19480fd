#pragma once

#include <string_view>

#include "Platform/Base/Export.h"
#include "Platform/Foundation/NSComparisonResult.h"

namespace zqcore::platform {

/// The platform's `compare:` with no options and no locale: by character value, so that "A" < "Z" < "a" and a
/// prefix comes first. Texts that are canonically equivalent (an accented letter, and the letter with its
/// mark) are equal: the order is that of the code points of the canonical decompositions. Bytes that are no
/// UTF-8 count as U+FFFD. ASCII is compared without any Unicode data. Any thread.
[[nodiscard]] ZQ_EXPORT NSComparisonResult compareText(std::string_view a, std::string_view b);

}  // namespace zqcore::platform
