#include "Platform/Lumberjack/DDLogDateFormatter.h"

#include <time.h>

#include <array>
#include <charconv>
#include <chrono>
#include <cstring>

namespace zqcore::platform {

namespace {

using std::chrono::floor;
using std::chrono::milliseconds;
using std::chrono::nanoseconds;

// Where the fields of "yyyy-MM-dd--HH-mm-ss-SSS" stand.
constexpr std::string_view kFileDatePattern = "dddd-dd-dd--dd-dd-dd-ddd";

std::int64_t roundedMilliseconds(Date date) {
    return floor<milliseconds>(date.time_since_epoch() + nanoseconds(500'000)).count();
}

std::int64_t floorDivided(std::int64_t value, std::int64_t by) {
    return value / by - (value % by < 0 ? 1 : 0);
}

void appendDigits(std::string& text, std::int64_t value, std::size_t width) {
    std::array<char, 24> digits;
    const char* end = std::to_chars(digits.begin(), digits.end(), value).ptr;
    const auto count = static_cast<std::size_t>(end - digits.data());
    if (count < width) text.append(width - count, '0');
    text.append(digits.data(), count);
}

void appendDay(std::string& text, std::int64_t year, int month, int day) {
    appendDigits(text, year, 4);
    text += '-';
    appendDigits(text, month, 2);
    text += '-';
    appendDigits(text, day, 2);
}

}  // namespace

std::string DDLogDateFormatter::stringFromDate(Date date) {
    std::string text;
    append(text, date);
    return text;
}

void DDLogDateFormatter::append(std::string& text, Date date) {
    const std::int64_t total = roundedMilliseconds(date);
    const std::int64_t second = floorDivided(total, 1000);
    const auto fraction = static_cast<int>(total - second * 1000);
    const std::int64_t minute = floorDivided(second, 60);
    if (minute != minute_ || oddZone_) {
        refresh(second);
        minute_ = minute;
    }
    const int shown = oddZone_ ? second_ : static_cast<int>(second - minute * 60);
    const char tail[] = {static_cast<char>('0' + shown / 10),
                         static_cast<char>('0' + shown % 10),
                         '.',
                         static_cast<char>('0' + fraction / 100),
                         static_cast<char>('0' + fraction / 10 % 10),
                         static_cast<char>('0' + fraction % 10)};
    text.append(prefix_).append(tail, sizeof(tail));
}

void DDLogDateFormatter::refresh(std::int64_t second) {
    ::tzset();  // localtime_r alone never looks again
    const time_t time = second;
    tm fields{};
    ::localtime_r(&time, &fields);
    oddZone_ = fields.tm_gmtoff % 60 != 0;
    second_ = fields.tm_sec;
    prefix_.clear();
    appendDay(prefix_, std::int64_t{fields.tm_year} + 1900, fields.tm_mon + 1, fields.tm_mday);
    prefix_ += ' ';
    appendDigits(prefix_, fields.tm_hour, 2);
    prefix_ += ':';
    appendDigits(prefix_, fields.tm_min, 2);
    prefix_ += ':';
}

std::string logFileDateText(Date date) {
    const std::chrono::sys_time<milliseconds> time{milliseconds(roundedMilliseconds(date))};
    const auto day = floor<std::chrono::days>(time);
    const std::chrono::year_month_day fields(day);
    const std::chrono::hh_mm_ss clock(time - day);
    std::string text;
    appendDay(text, static_cast<int>(fields.year()), static_cast<int>(static_cast<unsigned>(fields.month())),
              static_cast<int>(static_cast<unsigned>(fields.day())));
    text += '-';
    for (const std::int64_t value :
         {std::int64_t{clock.hours().count()}, std::int64_t{clock.minutes().count()},
          std::int64_t{clock.seconds().count()}}) {
        text += '-';
        appendDigits(text, value, 2);
    }
    text += '-';
    appendDigits(text, clock.subseconds().count(), 3);
    return text;
}

std::optional<Date> logFileDate(std::string_view text) {
    if (text.size() < kFileDatePattern.size()) return {};
    for (std::size_t i = 0; i < kFileDatePattern.size(); ++i) {
        const bool digit = text[i] >= '0' && text[i] <= '9';
        if (kFileDatePattern[i] == 'd' ? !digit : text[i] != kFileDatePattern[i]) return {};
    }
    const auto field = [&](std::size_t at, std::size_t width) {
        int value = 0;
        for (const char c : text.substr(at, width)) value = value * 10 + (c - '0');
        return value;
    };
    using namespace std::chrono;
    const year_month_day day(year(field(0, 4)), month(static_cast<unsigned>(field(5, 2))),
                             std::chrono::day(static_cast<unsigned>(field(8, 2))));
    // Beyond these years the nanoseconds of Date overflow.
    if (!day.ok() || field(0, 4) < 1678 || field(0, 4) > 2261) return {};
    if (field(12, 2) > 23 || field(15, 2) > 59 || field(18, 2) > 59) return {};
    return Date{sys_days(day)} + hours(field(12, 2)) + minutes(field(15, 2)) + seconds(field(18, 2)) +
           milliseconds(field(21, 3));
}

}  // namespace zqcore::platform
