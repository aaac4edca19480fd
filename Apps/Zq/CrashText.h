#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zq {

/// The parts of a crash report's text that a reader looks for first; what isn't there is empty.
struct CrashText {
    std::string exceptionType;
    /// That of an uncaught exception.
    std::string reason;
    /// "Thread 3, Dispatch queue: com.example.work".
    std::string threadName;
    std::vector<std::string> frames;
    std::vector<std::string> pendingLog;
};

[[nodiscard]] CrashText readCrashText(std::string_view text);

}  // namespace zq
