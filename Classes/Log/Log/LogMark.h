#pragma once

#include <cstdint>
#include <string_view>

#include "Platform/Lumberjack/DDLogMessage.h"

namespace zqcore {

/// The mark that a line carries for its flag. Verbose and whatever is no single flag up to debug is "V".
[[nodiscard]] constexpr std::string_view logMark(std::uint64_t flag) noexcept {
    switch (flag) {
        case DDLogFlagError:
            return "❌";
        case DDLogFlagWarning:
            return "W";
        case DDLogFlagInfo:
            return "I";
        case DDLogFlagDebug:
            return "D";
        default:
            return "V";
    }
}

}  // namespace zqcore
