#pragma once

#include <cstdint>
#include <string_view>

#include "Platform/Base/Date.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {

inline constexpr std::uint64_t DDLogFlagError = 1;
inline constexpr std::uint64_t DDLogFlagWarning = 2;
inline constexpr std::uint64_t DDLogFlagInfo = 4;
inline constexpr std::uint64_t DDLogFlagDebug = 8;
inline constexpr std::uint64_t DDLogFlagVerbose = 16;
inline constexpr std::uint64_t DDLogLevelAll = ~std::uint64_t{0};

/// One log line on its way to formatters and outputs.
/// Time: `timestamp` is the moment of the log call, by `Clock`. Lifetime: the texts are views that hold for
/// the one call that receives the message; copy what you keep.
struct DDLogMessage {
    std::string_view message;
    std::uint64_t level = 0;
    std::uint64_t flag = 0;
    std::int64_t context = 0;
    std::string_view file;
    /// The last component of `file`, cut at its last point.
    std::string_view fileName;
    std::string_view function;
    std::uint32_t line = 0;
    const void* tag = nullptr;
    Date timestamp{};
};

/// The last component of `path`, cut at its last point: "a.b" of "/x/a.b.swift", "Makefile" of "Makefile".
[[nodiscard]] ZQ_EXPORT std::string_view logFileName(std::string_view path) noexcept;

}  // namespace zqcore::platform
