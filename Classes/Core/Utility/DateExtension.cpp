#include "Classes/Core/Utility/DateExtension.h"

#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Foundation/NSCalendar.h"

namespace zqcore {

// The platform layer's formatter knows no other locale and no other calendar.
NSDateFormatter NSDateFormatterExtension::safeFormatter() { return {}; }

std::string zq_dateString(Date date, std::string_view format, bool useUTC) {
    NSDateFormatter formatter = NSDateFormatterExtension::safeFormatter();
    formatter.setDateFormat(std::string(format));
    if (useUTC) formatter.setTimeZone(NSTimeZone::timeZoneForSecondsFromGMT(0));
    return formatter.stringFromDate(date);
}

Date zq_beginningDate(Date date) {
    const NSDateComponents parts = NSCalendar::componentsFromDate(date);
    if (const auto start = NSCalendar::dateFromDay(parts.year, parts.month, parts.day)) return *start;
    ZQLogError([&] {
        return "获取当前 Date 起始时间失败: " +
               zq_dateString(date, "yyyy-MM-dd HH:mm:ss ZZZ", /*useUTC=*/true);
    });
    return date;
}

ZQDateComponets zq_parseDateComponets(Date date) {
    const NSDateComponents parts = NSCalendar::componentsFromDate(date);
    return {parts.year, parts.month, parts.day, parts.hour, parts.minute, parts.second};
}

}  // namespace zqcore
