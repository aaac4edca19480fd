#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// The log lines that have not surely reached their outputs, for a crash handler to save.
/// Threads: any, also inside a signal handler: no lock is taken, no memory allocated, errno is kept. The log
/// queue is halted for the time of the walk; if it doesn't halt within 100 ms (its thread may hang in the
/// kernel), the walk goes ahead regardless. It goes on after 4 s even if the walk was left by a jump.
/// Lifetime: the texts hold during the callback. Failure: lines that another thread is just putting in are
/// left out; some lines may have been written already.
class ZQ_EXPORT DDLogPendingLines final {
  public:
    struct Line {
        std::string_view message;
        const char* file;
        const char* function;
        std::uint32_t line;
        std::uint64_t flag;
        /// Nanoseconds since 1970, UTC.
        std::int64_t timestamp;
    };
    using Callback = void (*)(const Line& line, void* context);

    DDLogPendingLines() = delete;

    /// Calls `callback` for each line, oldest first, and gives their count. A null callback only counts.
    static std::size_t walk(Callback callback, void* context) noexcept;
    /// Writes the newest `limit` lines, oldest first, one a row: "[yyyy-MM-dd HH:mm:ss.SSSZ ● FILE ● LINE ●
    /// FLAG] MESSAGE", the time in UTC. Gives how many.
    static std::size_t writeTo(int fd, std::size_t limit = SIZE_MAX) noexcept;
};

}  // namespace zqcore::platform
