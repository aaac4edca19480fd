#include "Platform/Foundation/NSTimeZone.h"

namespace zqcore::platform {

std::tm NSTimeZone::calendarTime(std::int64_t secondsSince1970) const noexcept {
    std::tm result{};
    if (seconds_) {
        const std::time_t shifted = secondsSince1970 + *seconds_;
        gmtime_r(&shifted, &result);
        result.tm_gmtoff = *seconds_;
    } else {
        const std::time_t seconds = secondsSince1970;
        localtime_r(&seconds, &result);
    }
    return result;
}

std::int64_t NSTimeZone::moment(const std::tm& calendarTime) const noexcept {
    std::tm time = calendarTime;
    if (seconds_) return timegm(&time) - *seconds_;
    // By the zone's own rules for that moment. In the hour that comes twice both answers hold; that of summer
    // is the earlier. In the hour that never comes neither does; that of winter lies behind the gap.
    std::tm summer = calendarTime;
    summer.tm_isdst = 1;
    std::tm winter = calendarTime;
    winter.tm_isdst = 0;
    const std::time_t bySummer = mktime(&summer);
    const std::time_t byWinter = mktime(&winter);
    const bool summerHolds = summer.tm_isdst == 1 && summer.tm_hour == calendarTime.tm_hour;
    return summerHolds ? bySummer : byWinter;
}

}  // namespace zqcore::platform
