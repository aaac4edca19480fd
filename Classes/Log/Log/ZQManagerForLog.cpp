#include "Classes/Log/Log/ZQManagerForLog.h"

#include <atomic>
#include <mutex>

#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Lumberjack/DDLog.h"
#include "Platform/Lumberjack/DDOSLogger.h"

namespace zqcore {

namespace {

std::atomic<const std::shared_ptr<DDLog>*> installed{nullptr};

}  // namespace

void ZQManagerForLog::initialize() { logging::ready.store(true, std::memory_order_release); }

const std::shared_ptr<DDLog>& ZQManagerForLog::sharedDDLog() {
    if (const auto* ddlog = installed.load(std::memory_order_acquire)) return *ddlog;
    initialize();
    static const auto& shared = *new std::shared_ptr<DDLog>(DDLog::make());
    static std::once_flag once;
    thread_local bool configuring = false;
    if (configuring) return shared;
    std::call_once(once, [] {
        configuring = true;
        configDDLog(*shared, "Default");
        configuring = false;
    });
    return shared;
}

void ZQManagerForLog::configDDLog(DDLog& ddlog, std::string_view) {
    ddlog.addLogger(DDOSLogger::sharedInstance());
}

void ZQManagerForLog::installSharedDDLogForTesting(const std::shared_ptr<DDLog>* ddlog) {
    installed.store(ddlog, std::memory_order_release);
}

}  // namespace zqcore
