#include "Platform/Foundation/NSCalendar.h"

#include <chrono>
#include <compare>
#include <cstdint>
#include <ctime>
#include <tuple>

#include "Platform/Foundation/NSTimeZone.h"

namespace zqcore::platform {

namespace {

using Day = std::tuple<int, int, int>;

std::tm localTime(std::int64_t seconds) { return NSTimeZone::defaultTimeZone().calendarTime(seconds); }

Day dayOf(std::int64_t seconds) {
    const std::tm local = localTime(seconds);
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday};
}

}  // namespace

NSDateComponents NSCalendar::componentsFromDate(Date date) {
    const std::tm local =
        localTime(std::chrono::floor<std::chrono::seconds>(date.time_since_epoch()).count());
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec};
}

std::optional<Date> NSCalendar::dateFromDay(int year, int month, int day) {
    std::tm noon{};
    noon.tm_year = year - 1900;
    noon.tm_mon = month - 1;
    noon.tm_mday = day;
    noon.tm_hour = 12;
    std::int64_t inside = NSTimeZone::defaultTimeZone().moment(noon);
    const Day wanted{year, month, day};
    if (dayOf(inside) != wanted) return std::nullopt;
    // A clock that is changed at midnight skips it or shows it twice. The day that is shown never goes back,
    // so the first moment of this one can be searched for.
    constexpr std::int64_t kLongestMorning = std::int64_t{18} * 3600;
    std::int64_t before = inside - kLongestMorning;
    while (inside - before > 1) {
        const std::int64_t middle = before + (inside - before) / 2;
        (dayOf(middle) < wanted ? before : inside) = middle;
    }
    return Date(std::chrono::seconds(inside));
}

}  // namespace zqcore::platform
