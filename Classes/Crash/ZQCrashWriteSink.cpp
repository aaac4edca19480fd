#include "Classes/Crash/ZQCrashWriteSink.h"

#include <optional>
#include <string>

#include "Classes/Core/Utility/ZQPathFetcher.h"
#include "Classes/Crash/CrashFileName.h"
#include "Classes/Crash/ZQCrash.h"
#include "Classes/Crash/ZQCrashDateSink.h"
#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Foundation/NSFileManager.h"
#include "Platform/Foundation/NSPath.h"

namespace zqcore {

namespace {

bool write(const KSCrashReport* report, long index, const std::string& directory) {
    const auto* text = dynamic_cast<const KSCrashReportString*>(report);
    if (!text) {
        ZQLogError("report 不是 string");
        return false;
    }
    std::optional<Date> date;
    if (const auto found = ZQCrashDateSink::dates().find(index); found != ZQCrashDateSink::dates().end()) {
        date = found->second;
    } else {
        ZQLogError("report 日期为空");
    }
    const NSFileManager& files = NSFileManager::defaultManager();
    const std::string path = stringByAppendingPathComponent(directory, crashfile::name(date));
    (void)files.removeItemAtPath(path);
    // The last lines of the log are in it, so it is as private as the log.
    const auto written = files.writeAtomically(text->value(), path, 0600);
    if (!written) ZQLogError([&] { return "写入 crash 日志失败: " + written.error().description(); });
    return written.has_value();
}

}  // namespace

void ZQCrashWriteSink::filterReports(const KSCrashReports& reports,
                                     const KSCrashReportFilterCompletion& onCompletion) {
    const std::string directory = ZQCrash::exportDirectory();
    (void)fetcherCreateDirectoryIfNotExist(directory);
    bool completed = true;
    long index = 0;
    for (const auto& report : reports) completed = write(report.get(), index++, directory) && completed;
    if (onCompletion) onCompletion(reports, completed, std::nullopt);
}

}  // namespace zqcore
