#include "Classes/Log/Log/ZQManagerForLog.h"

#include <atomic>
#include <mutex>

#include "Classes/Core/Utility/ZQInfo.h"
#include "Classes/Core/Utility/ZQPathFetcher.h"
#include "Classes/Log/Log/ZQConsoleLogFormatter.h"
#include "Classes/Log/Log/ZQFileLogFormatter.h"
#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Base/NSLog.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Foundation/NSBundle.h"
#include "Platform/Foundation/NSPath.h"
#include "Platform/Foundation/NSProcessInfo.h"
#include "Platform/Foundation/NSUserDefaults.h"
#include "Platform/Lumberjack/DDFileLogger.h"
#include "Platform/Lumberjack/DDLog.h"
#include "Platform/Lumberjack/DDLogFileManagerDefault.h"
#include "Platform/Lumberjack/DDOSLogger.h"

namespace zqcore {

namespace {

constexpr std::string_view kDefaultName = "Default";
constexpr std::string_view kLevelKey = "ZQLog_logLevel";
constexpr std::uint64_t kMaximumNumberOfLogFiles = 50;
constexpr std::uint64_t kLogFilesDiskQuota = 20'971'520;

std::atomic<const std::shared_ptr<DDLog>*> installed{nullptr};
// Set once the shared logger takes lines without a set-up.
std::atomic<bool> configured{false};
// What the set-up calls may log, and must not wait for itself.
thread_local bool initializing = false;

/// Takes what the layer below reports. Who reports may hold what the set-up of the shared logger asks for, so
/// the set-up is left to another thread.
void takeReport(std::string_view line) {
    if (initializing || configured.load(std::memory_order_acquire) ||
        installed.load(std::memory_order_acquire)) {
        return ZQLogError(line);
    }
    DispatchQueue::global(DispatchQoS::utility)->async([text = std::string(line)] { ZQLogError(text); });
}

std::string orNull(std::optional<std::string> text) { return text ? std::move(*text) : "(null)"; }

/// The name that log files begin with.
std::string applicationName() {
    std::string identifier = NSBundle::mainBundle()->bundleIdentifier();
    return identifier.empty() ? NSProcessInfo::processInfo().processName() : identifier;
}

std::string directoryReport(std::string_view name) {
    std::string report = "日志文件夹:\n" + orNull(ZQManagerForLog::logDirectoryWithName(name));
    const auto add = [&](std::string_view title, std::string_view path) {
        report.append("\n").append(title).append(":\n").append(path);
    };
    add("bundle", ZQPathFetcher::bundleDirectory());
    add("sandbox", ZQPathFetcher::sandboxDirectory());
    add("documents", ZQPathFetcher::documentsDirectory());
    add("library", ZQPathFetcher::libraryDirectory());
    add("caches", ZQPathFetcher::cachesDirectory());
    add("temp", ZQPathFetcher::temporaryDirectory());
    add("userdefaults", ZQPathFetcher::userDefaultsPlistFilePath());
    add("application scripts", orNull(ZQPathFetcher::applicationScriptsDirectory()));
    add("application scripts(original)", orNull(ZQPathFetcher::originalApplicationScriptsDirectory()));
    add("application support", ZQPathFetcher::applicationSupportDirectory());
    add("downloads", ZQPathFetcher::downloadsDirectory());
    return report;
}

std::string banner(std::string_view name) {
    std::string text = "\n=========> 🚀\n";
    text += ZQInfo::appIdentifier() + ' ' + ZQInfo::appFullVersion() + ' ' + std::to_string(ZQInfo::pid());
    text += '\n' + ZQInfo::macOSVersion();
    text += '\n' + ZQInfo::macModel() + ' ' + ZQInfo::macArchitecture();
    text += "\nguid " + orNull(ZQInfo::macGuid());
    text.append("\n启动 ZQLog(").append(name).append(")...\n\n");
    text += directoryReport(name);
    text += "\n<=========";
    return text;
}

}  // namespace

void ZQManagerForLog::initialize() {
    static std::once_flag once;
    if (initializing) return;
    std::call_once(once, [] {
        initializing = true;
        restoreLogLevel();
        DDOSLogger::sharedInstance()->setLogFormatter(std::make_shared<ZQConsoleLogFormatter>());
        // Last: who reports while it holds what the set-up needs must not be sent here to wait for the
        // set-up.
        setNSLogHandler(&takeReport);
        initializing = false;
    });
    logging::ready.store(true, std::memory_order_release);
}

const std::shared_ptr<DDLog>& ZQManagerForLog::sharedDDLog() {
    if (const auto* ddlog = installed.load(std::memory_order_acquire)) return *ddlog;
    initialize();
    static const auto& shared = *new std::shared_ptr<DDLog>(DDLog::make());
    static std::once_flag once;
    thread_local bool configuring = false;
    if (configuring) return shared;
    std::call_once(once, [] {
        configuring = true;
        configDDLog(*shared, kDefaultName);
        configuring = false;
        configured.store(true, std::memory_order_release);
    });
    return shared;
}

std::shared_ptr<DDLog> ZQManagerForLog::createDDLogWithName(std::string_view name) {
    initialize();
    if (name.empty()) return nullptr;
    if (name == kDefaultName) return sharedDDLog();
    auto ddlog = DDLog::make();
    configDDLog(*ddlog, name);
    return ddlog;
}

void ZQManagerForLog::configDDLog(DDLog& ddlog, std::string_view name) {
    initialize();
    ddlog.addLogger(DDOSLogger::sharedInstance());
    auto manager = DDLogFileManagerDefault::make(logDirectoryWithName(name), applicationName());
    manager->setMaximumNumberOfLogFiles(kMaximumNumberOfLogFiles);
    manager->setLogFilesDiskQuota(kLogFilesDiskQuota);
    auto output = DDFileLogger::make(std::move(manager));
    output->setLogFormatter(std::make_shared<ZQFileLogFormatter>());
    ddlog.addLogger(std::move(output));
    // Built even if the level keeps it back.
    std::string text = banner(name);
    const std::uint64_t level = ZQDefaultLogLevel.load(std::memory_order_relaxed);
    if ((level & DDLogFlagInfo) == 0) return;
    ddlog.log(ZQDefaultLogAsyncEnabled.load(std::memory_order_relaxed) != 0, level, DDLogFlagInfo, 0,
              __FILE__, "+[ZQManagerForLog configDDLog:name:]", __LINE__, nullptr, std::move(text));
}

std::string ZQManagerForLog::rootLogDirectory() {
    initialize();
    return stringByAppendingPathComponent(ZQPathFetcher::zqcoreLogsDirectory(), "ZQLogs");
}

std::optional<std::string> ZQManagerForLog::logDirectoryWithName(std::string_view name) {
    if (name.empty()) return {};
    return stringByAppendingPathComponent(rootLogDirectory(), name);
}

const std::string& ZQManagerForLog::defaultLogDirectory() {
    static const auto& directory = *new std::string(*logDirectoryWithName(kDefaultName));
    return directory;
}

void ZQManagerForLog::setLogLevel(std::uint64_t level) {
    initialize();
    ZQDefaultLogLevel.store(level, std::memory_order_relaxed);
    const auto& defaults = NSUserDefaults::standardUserDefaults();
    defaults->setInteger(static_cast<std::uint32_t>(level), kLevelKey);
    defaults->synchronize();
}

void ZQManagerForLog::restoreLogLevel() {
    initialize();
    const auto stored = NSUserDefaults::standardUserDefaults()->objectForKey(kLevelKey);
    if (!stored) return;
    if (const auto level = stored->numberAsUInt32())
        ZQDefaultLogLevel.store(*level, std::memory_order_relaxed);
}

void ZQManagerForLog::installSharedDDLogForTesting(const std::shared_ptr<DDLog>* ddlog) {
    installed.store(ddlog, std::memory_order_release);
}

}  // namespace zqcore
