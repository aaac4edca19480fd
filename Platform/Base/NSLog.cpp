#include "Platform/Base/NSLog.h"

#include <atomic>
#include <cstdio>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Base/Linux/PipeSignalHeld.h"

namespace zqcore::platform {

namespace {

constexpr std::size_t kEarlyLines = 32;

std::atomic<NSLogHandler> installed{nullptr};
thread_local bool reporting = false;

/// What was reported before there was a logger: a damaged settings file, say, is found while the logger
/// starts.
struct Early {
    std::mutex mutex;
    bool over = false;
    std::vector<std::string> lines;
};

Early& early() {
    static Early& state = *new Early;
    return state;
}

void handOver(NSLogHandler handler, std::string_view line) {
    reporting = true;
    handler(line);
    reporting = false;
}

}  // namespace

void NSLog(std::string_view line) {
    const NSLogHandler handler = installed.load(std::memory_order_acquire);
    if (handler && !reporting) {
        handOver(handler, line);
        return;
    }
    {
        const PipeSignalHeld held;
        std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
    }
    const std::lock_guard lock(early().mutex);
    if (!early().over && early().lines.size() < kEarlyLines) early().lines.emplace_back(line);
}

void setNSLogHandler(NSLogHandler handler) {
    installed.store(handler, std::memory_order_release);
    if (!handler) return;
    std::vector<std::string> lines;
    {
        const std::lock_guard lock(early().mutex);
        early().over = true;
        lines = std::exchange(early().lines, {});
    }
    for (const auto& line : lines) handOver(handler, line);
}

}  // namespace zqcore::platform
