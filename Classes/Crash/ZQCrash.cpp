#include "Classes/Crash/ZQCrash.h"

#include <algorithm>
#include <utility>

#include "Classes/Core/Utility/ZQPathFetcher.h"
#include "Classes/Crash/CrashFileName.h"
#include "Classes/Crash/ZQCrashDateSink.h"
#include "Classes/Crash/ZQCrashWriteSink.h"
#include "Classes/Log/Log/ZQLog.h"
#include "Platform/CrashCapture/KSCrash.h"
#include "Platform/CrashCapture/KSCrashReportFilterAppleFmt.h"
#include "Platform/CrashCapture/KSCrashReportFilterPipeline.h"
#include "Platform/Foundation/NSFileManager.h"
#include "Platform/Foundation/NSPath.h"
#include "Platform/Lumberjack/DDLogPendingLines.h"

namespace zqcore {

namespace {

bool installed = false;

// In a signal handler: nothing here but the call.
void writePendingLines(int fd) {
    constexpr std::size_t kNewest = 500;
    (void)DDLogPendingLines::writeTo(fd, kNewest);
}

// As an optional value describes itself.
std::string described(const std::optional<NSError>& error) {
    return error ? "Optional(" + error->description() + ")" : "nil";
}

void tellExport(const std::optional<KSCrashReports>& reports, bool completed,
                const std::optional<NSError>& error) {
    if (reports && !reports->empty()) {
        ZQLogInfo([&] {
            return "导出崩溃日志：count=" + std::to_string(reports->size()) +
                   "; result=" + (completed ? "true" : "false") + "; error=" + described(error);
        });
    } else {
        ZQLogInfo("无崩溃日志");
    }
}

}  // namespace

void ZQCrash::install() {
    if (std::exchange(installed, true)) return;
    KSCrashConfiguration configuration;
    configuration.setDeleteBehaviorAfterSendAll(KSCrashDeleteBehavior::onSuccess);
    configuration.setPendingLogWriter(writePendingLines);

    KSCrash& crash = KSCrash::sharedInstance();
    if (const auto result = crash.installWithConfiguration(configuration); !result) {
        ZQLogError([&] { return "启用 ZQCrash 失败：" + result.error().description(); });
    } else {
        ZQLogInfo("启用 ZQCrash 完成");
    }

    // The filter added last is the first in the row.
    const auto pipeline = KSCrashReportFilterPipeline::make({});
    pipeline->addFilter(std::make_shared<ZQCrashWriteSink>());
    pipeline->addFilter(KSCrashReportFilterAppleFmt::make(KSAppleReportStyle::symbolicatedSideBySide));
    pipeline->addFilter(std::make_shared<ZQCrashDateSink>());
    crash.setSink(pipeline);
    crash.sendAllReportsWithCompletion(tellExport);
}

std::string ZQCrash::exportDirectory() {
    return stringByAppendingPathComponent(ZQPathFetcher::zqcoreLogsDirectory(), "ZQCrash");
}

std::string ZQCrash::exportDirectory(std::string_view identifier) {
    return stringByAppendingPathComponent(ZQPathFetcher::sandboxDirectory(identifier),
                                          "Documents/ZQCoreLogs/ZQCrash");
}

std::vector<ZQCrash::ExportedReport> ZQCrash::exportedReports(const std::string& directory) {
    std::vector<ExportedReport> reports;
    const auto names = NSFileManager::defaultManager().contentsOfDirectoryAtPath(directory);
    if (!names) return reports;
    for (const std::string& name : *names) {
        std::optional<Date> date;
        if (crashfile::parse(name, date))
            reports.push_back({stringByAppendingPathComponent(directory, name), date});
    }
    std::ranges::sort(reports, [](const ExportedReport& a, const ExportedReport& b) {
        if (a.date.has_value() != b.date.has_value()) return a.date.has_value();
        return std::pair(a.date, a.path) < std::pair(b.date, b.path);
    });
    return reports;
}

}  // namespace zqcore
