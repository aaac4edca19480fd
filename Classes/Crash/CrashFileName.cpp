#include "Classes/Crash/CrashFileName.h"

#include "Platform/Foundation/NSDateFormatter.h"
#include "Platform/Foundation/UUID.h"

namespace zqcore::crashfile {

namespace {

constexpr std::string_view kPrefix = "crash-report-";
constexpr std::string_view kSuffix = ".crash";

NSDateFormatter dateFormatter() {
    NSDateFormatter formatter;
    formatter.setDateFormat("yyyy-MM-dd-HH-mm-ss.SSSZZZ");
    return formatter;
}

}  // namespace

std::string name(std::optional<Date> date) {
    const std::string dateText =
        date ? dateFormatter().stringFromDate(*date) : "date-empty-" + makeUUIDString();
    return std::string(kPrefix) + dateText + std::string(kSuffix);
}

bool parse(std::string_view fileName, std::optional<Date>& date) {
    if (!fileName.starts_with(kPrefix) || !fileName.ends_with(kSuffix)) return false;
    if (fileName.size() < kPrefix.size() + kSuffix.size()) return false;
    fileName.remove_prefix(kPrefix.size());
    fileName.remove_suffix(kSuffix.size());
    date = dateFormatter().dateFromString(fileName);
    return true;
}

}  // namespace zqcore::crashfile
