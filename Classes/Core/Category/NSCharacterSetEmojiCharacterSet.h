#pragma once

#include "Platform/Base/Export.h"
#include "Platform/Foundation/Text/NSCharacterSet.h"

namespace zqcore {

/// The 1,170 scalars that occur in `zq_allSystemEmoji`. The ASCII digits, `#`, `*`, U+200D, U+20E3 and U+FE0F
/// are among them, since keycap and emoji sequences hold them. Made anew on each call; any thread.
[[nodiscard]] ZQ_EXPORT NSCharacterSet zq_emojiCharacterSet();

}  // namespace zqcore
