#include "Platform/Lumberjack/DDLogDateFormatter.h"

#include <gtest/gtest.h>

#include "TestKit/TimeZoneGuard.h"

namespace zqcore {
namespace {

using namespace std::chrono_literals;

constexpr Date at(std::int64_t seconds, std::int64_t nanoseconds = 0) {
    return Date{std::chrono::seconds(seconds) + std::chrono::nanoseconds(nanoseconds)};
}

TEST(DDLogDateFormatterTest, WritesLocalTimeRoundedToTheNearestMillisecond) {
    struct Case {
        const char* zone;
        Date date;
        std::string_view text;
    };
    // 1704164645 is 2024-01-02 03:04:05 UTC.
    for (const auto& [zone, date, text] : {
             Case{"UTC", at(1'704'164'645), "2024-01-02 03:04:05.000"},
             Case{"Asia/Kathmandu", at(1'704'164'645, 7'000'000), "2024-01-02 08:49:05.007"},
             Case{"America/St_Johns", at(1'704'164'645), "2024-01-01 23:34:05.000"},
             Case{"UTC", at(1'704'164'645, 499'999), "2024-01-02 03:04:05.000"},
             Case{"UTC", at(1'704'164'645, 500'000), "2024-01-02 03:04:05.001"},
             Case{"UTC", at(1'704'164'699, 999'600'000), "2024-01-02 03:05:00.000"},
             Case{"UTC", at(1'704'067'199, 999'500'000), "2024-01-01 00:00:00.000"},
             Case{"UTC", at(-1, 999'000'000), "1969-12-31 23:59:59.999"},
             // Half an hour of summer time, and an offset with seconds.
             Case{"Europe/Berlin", at(1'711'846'799), "2024-03-31 01:59:59.000"},
             Case{"Europe/Berlin", at(1'711'846'800), "2024-03-31 03:00:00.000"},
             Case{"Africa/Monrovia", at(0), "1969-12-31 23:15:30.000"},
             Case{"Africa/Monrovia", at(29), "1969-12-31 23:15:59.000"},
             Case{"Africa/Monrovia", at(30), "1969-12-31 23:16:00.000"},
         }) {
        const testkit::TimeZoneGuard guard(zone);
        EXPECT_EQ(DDLogDateFormatter().stringFromDate(date), text) << zone;
    }
}

TEST(DDLogDateFormatterTest, KeepsNoMinuteTooLong) {
    for (const char* zone : {"Asia/Kathmandu", "Africa/Monrovia"}) {
        const testkit::TimeZoneGuard guard(zone);
        DDLogDateFormatter kept;
        // Forwards and backwards across minutes, hours and the day.
        for (std::int64_t step = 0; step < 400; ++step) {
            const Date date = at((step * 7919) % 90'000, step * 2'000'003);
            EXPECT_EQ(kept.stringFromDate(date), DDLogDateFormatter().stringFromDate(date)) << zone << step;
        }
    }
}

TEST(DDLogDateFormatterTest, FileDatesGoThereAndBack) {
    EXPECT_EQ(logFileDateText(at(1'704'164'645, 6'000'000)), "2024-01-02--03-04-05-006");
    for (const Date date : {at(0), at(1'704'164'645, 999'000'000), at(4'102'444'799, 1'000'000)})
        EXPECT_EQ(logFileDate(logFileDateText(date)), date);
    EXPECT_TRUE(logFileDate("2024-01-02--03-04-05-006 2"));
    for (const std::string_view text :
         {"", "2024-01-02--03-04-05", "2024-13-02--03-04-05-006", "2024-02-30--03-04-05-006",
          "2024-01-02--24-04-05-006", "2024-01-02 03-04-05--006", "0001-01-02--03-04-05-006"}) {
        EXPECT_FALSE(logFileDate(text)) << text;
    }
}

}  // namespace
}  // namespace zqcore
