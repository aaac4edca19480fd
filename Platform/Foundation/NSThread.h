#pragma once

#include <string>
#include <vector>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// What is known of the calling thread. Threads: any.
class ZQ_EXPORT NSThread final {
  public:
    NSThread() = delete;

    /// The call stack, innermost call first, without this one, 128 frames at most. A row: the frame's number
    /// left in 4 columns, its image left in 35, blank, "0x" and 16 hexadecimal digits, blank, symbol, " + ",
    /// offset. For code without a name in the dynamic symbol table the image's base address stands as symbol.
    [[nodiscard]] static std::vector<std::string> callStackSymbols();
};

}  // namespace zqcore::platform
