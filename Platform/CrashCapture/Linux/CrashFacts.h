#pragma once

#include <ucontext.h>

#include <array>
#include <csignal>
#include <cstdint>
#include <string_view>

#include "Platform/CrashCapture/Linux/CrashHandler.h"

namespace zqcore::platform::crash {

/// What is known about the crash that is being reported. Lies in static memory; one crash at a time.
struct CrashFacts {
    int signal = 0;
    siginfo_t info{};
    const ucontext_t* context = nullptr;
    /// How many of the innermost frames are the handler's own.
    std::size_t skippedFrames = 0;
    int thread = 0;
    bool isException = false;
    std::array<char, 512> exceptionName{};
    std::array<char, 4096> exceptionReason{};
    /// Whether the exception is of a kind that has a text.
    bool hasReason = false;
};

/// What went wrong while the report was written.
struct HandlerFault {
    int signal = 0;
    std::uint64_t address = 0;
    /// The section it happened in.
    const char* section = nullptr;
    std::array<std::uint64_t, 32> frames{};
    std::size_t frameCount = 0;
};

/// One step of a report. A step that crashes or hangs is given up, and the next one goes on.
struct ReportSection {
    const char* name;
    void (*write)();
};

/// Opens the report's file and gives its descriptor, or -1.
int beginReport(const HandlerConfiguration& configuration, const CrashFacts& facts) noexcept;
[[nodiscard]] const ReportSection* reportSections(std::size_t& count) noexcept;
/// Ends what the section in hand has left open, and notes why.
void abandonSection(std::size_t depth, const HandlerFault& fault) noexcept;
[[nodiscard]] std::size_t reportDepth() noexcept;
/// Ends the file. Without its end mark a report counts as torn.
void endReport() noexcept;

/// The signal's name, such as "SIGSEGV"; empty for a signal that isn't handled here.
[[nodiscard]] std::string_view signalName(int signal) noexcept;

}  // namespace zqcore::platform::crash
