#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace zqcore::platform::crash {

/// All that a report needs and a signal handler can't find out; gathered at install.
struct HandlerConfiguration {
    /// The path of a report up to its number.
    std::string reportPrefix;
    /// The number of the first report; the next free one is taken.
    std::uint64_t firstNumber = 0;
    /// Members of "report" and of "system" as JSON, without what only the moment of the crash tells.
    std::string reportMembers;
    std::string systemMembers;
    void (*pendingLogWriter)(int fd) = nullptr;
    std::chrono::milliseconds sectionTimeLimit{};
};

/// Puts the configuration in force and, the first time, the handlers in place: those for signals, keeping the
/// earlier ones to be called after; that for uncaught exceptions; and an alternate stack for the calling
/// thread. Threads: one at a time.
void installHandlers(HandlerConfiguration configuration);

/// Extensions of the files that a report consists of: itself, and the lines that the log still held.
inline constexpr const char* kReportExtension = ".json";
inline constexpr const char* kLogExtension = ".log";

}  // namespace zqcore::platform::crash
