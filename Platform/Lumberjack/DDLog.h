#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"
#include "Platform/Lumberjack/DDLogger.h"

namespace zqcore::platform {

struct LogOutputs;

/// A logger: the outputs that its lines go to. All of the process's loggers share one serial queue,
/// "cocoa.lumberjack", which keeps their lines in the order of the calls.
/// Time: a line carries the moment of its call. Threads: every operation from any thread. Lifetime: lines
/// that were logged are written even if the logger goes at once; a normal exit of the process writes out all
/// that are waiting. Failure: none; a line that an output refuses is dropped by that output.
class ZQ_EXPORT DDLog final {
  public:
    [[nodiscard]] static std::shared_ptr<DDLog> make();
    DDLog();
    ~DDLog();
    DDLog(const DDLog&) = delete;
    DDLog& operator=(const DDLog&) = delete;

    /// Adds an output for all levels, in order with the log calls. Adding the same object again does nothing.
    void addLogger(std::shared_ptr<DDLogger> logger);

    /// Logs one line. The caller has tested `level` against `flag`; a flag of 0 reaches no output. `file` and
    /// `function` must live as long as the process, like those of `std::source_location`. Asynchronous: the
    /// line is queued and the call returns. Synchronous: earlier lines are out first, and the call returns
    /// when all outputs have the line; on the log queue itself it goes out at once.
    void log(bool asynchronous, std::uint64_t level, std::uint64_t flag, std::int64_t context,
             const char* file, const char* function, std::uint32_t line, const void* tag,
             std::string_view text);
    /// The same for a text that may be taken over instead of copied, which spares long ones.
    void log(bool asynchronous, std::uint64_t level, std::uint64_t flag, std::int64_t context,
             const char* file, const char* function, std::uint32_t line, const void* tag, std::string&& text);

    /// Returns when every line logged before, by any logger, has reached its outputs.
    static void flushLog();

  private:
    LogOutputs* outputs_;
};

}  // namespace zqcore::platform
