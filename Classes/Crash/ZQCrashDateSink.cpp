#include "Classes/Crash/ZQCrashDateSink.h"

#include <optional>
#include <string>

#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Foundation/NSDateFormatter.h"

namespace zqcore {

namespace {

std::optional<Date> dateOf(const KSCrashReport* report, const NSDateFormatter& formatter) {
    const auto* dictionary = dynamic_cast<const KSCrashReportDictionary*>(report);
    if (!dictionary) {
        ZQLogError("report 不是 dict");
        return std::nullopt;
    }
    const Value* entry = dictionary->value().find("report");
    const Value::Dictionary* reportInfo = entry ? entry->asDictionary() : nullptr;
    if (!reportInfo) {
        ZQLogError("reportInfo 不是 dict");
        return std::nullopt;
    }
    const Value* timestamp = reportInfo->find("timestamp");
    const std::string* text = timestamp ? timestamp->asString() : nullptr;
    if (!text) {
        ZQLogError("reportInfo 未找到时间戳");
        return std::nullopt;
    }
    const std::optional<Date> date = formatter.dateFromString(*text);
    if (!date) ZQLogError([&] { return "reportInfo 时间戳转换失败: " + *text; });
    return date;
}

}  // namespace

std::map<long, Date>& ZQCrashDateSink::dates() noexcept {
    static auto& dates = *new std::map<long, Date>;
    return dates;
}

void ZQCrashDateSink::filterReports(const KSCrashReports& reports,
                                    const KSCrashReportFilterCompletion& onCompletion) {
    NSDateFormatter formatter;
    formatter.setDateFormat("yyyy'-'MM'-'dd'T'HH':'mm':'ss'.'SSSSSS'Z'");
    formatter.setTimeZone(NSTimeZone::timeZoneForSecondsFromGMT(0));
    long index = 0;
    for (const auto& report : reports) {
        if (const auto date = dateOf(report.get(), formatter)) dates()[index] = *date;
        ++index;
    }
    if (onCompletion) onCompletion(reports, true, std::nullopt);
}

}  // namespace zqcore
