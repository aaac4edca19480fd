#include "Platform/Base/NSLog.h"

#include <atomic>
#include <cstdio>
#include <mutex>

namespace zqcore::platform {

namespace {

std::atomic<NSLogHandler> installed{nullptr};
std::mutex handlerMutex;
thread_local bool reporting = false;

void writeToStandardError(std::string_view line) {
    std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
}

}  // namespace

void NSLog(std::string_view line) {
    const NSLogHandler handler = installed.load(std::memory_order_acquire);
    if (!handler || reporting) {
        writeToStandardError(line);
        return;
    }
    const std::lock_guard lock(handlerMutex);
    reporting = true;
    handler(line);
    reporting = false;
}

void setNSLogHandler(NSLogHandler handler) noexcept { installed.store(handler, std::memory_order_release); }

}  // namespace zqcore::platform
