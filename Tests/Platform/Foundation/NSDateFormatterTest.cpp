#include "Platform/Foundation/NSDateFormatter.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "TestKit/TimeZoneGuard.h"

namespace zqcore::platform {
namespace {

using testkit::TimeZoneGuard;

constexpr const char* kTimestamp = "yyyy'-'MM'-'dd'T'HH':'mm':'ss'.'SSSSSS'Z'";

Date at(std::int64_t seconds, std::int64_t nanoseconds = 0) {
    return Date(std::chrono::nanoseconds(seconds * 1'000'000'000 + nanoseconds));
}

NSDateFormatter formatter(std::string pattern, std::optional<int> seconds = 0) {
    NSDateFormatter result;
    result.setDateFormat(std::move(pattern));
    if (seconds) result.setTimeZone(NSTimeZone::timeZoneForSecondsFromGMT(*seconds));
    return result;
}

TEST(NSDateFormatter, WritesNumbersRoundedToTheNearestMillisecond) {
    struct Case {
        const char* pattern;
        Date date;
        int zone;
        const char* text;
    };
    const Case cases[] = {
        {"yyyy-MM-dd HH:mm:ss.SSS", at(1614834367, 123'456'789), 0, "2021-03-04 05:06:07.123"},
        {"yyyy-MM-dd HH:mm:ss.SSS", at(1614834367, 123'500'000), 0, "2021-03-04 05:06:07.124"},
        {"HH:mm:ss.SSS", at(1614834367, 999'600'000), 0, "05:06:08.000"},
        {"HH:mm:ss.SSS", at(-1, 999'499'999), 0, "23:59:59.999"},
        {"HH:mm:ss.SSS", at(-1, 999'500'000), 0, "00:00:00.000"},
        {"ss.SSSSSS", at(7, 123'999'999), 0, "07.124000"},
        {"s.S", at(7, 199'000'000), 0, "7.1"},
        {"M/d/y H:m", at(1614834367), 0, "3/4/2021 5:6"},
        {"HH ZZZ", at(0), 28800, "08 +0800"},
        {"HH ZZZ", at(0), -12600, "20 -0330"},
        {"HHZ", at(0), 0, "00+0000"},
        {"'o''clock' HH ''", at(0), 0, "o'clock 00 '"},
        {"yyyy", at(-8'000'000'000), 0, "1716"},
        {"", at(0), 0, ""},
        {"EEEE, d. MMMM yyyy", at(1614834367), 0, "Thursday, 4. March 2021"},
        {"yy h a", at(1614834367), 0, "21 5 AM"},
        {"EEE HH:mm:ss ZZZZZ", at(0), -12630, "Wed 20:29:30 -03:30:30"},
        {"MMM d HH z", at(0), 28800, "Jan 1 08 GMT+8"},
    };
    for (const auto& [pattern, date, zone, text] : cases) {
        EXPECT_EQ(formatter(pattern, zone).stringFromDate(date), text) << pattern;
    }
}

TEST(NSDateFormatter, FollowsTheZoneOfTheProcessThroughTheYear) {
    const TimeZoneGuard guard("America/St_Johns");
    const NSDateFormatter local = formatter("yyyy-MM-dd-HH-mm-ss.SSSZZZ", std::nullopt);
    EXPECT_EQ(local.stringFromDate(at(1614834367, 123'000'000)), "2021-03-04-01-36-07.123-0330");
    EXPECT_EQ(local.stringFromDate(at(1625140800)), "2021-07-01-09-30-00.000-0230");
}

TEST(NSDateFormatter, WordsAndNumbersAgreeOnTheZone) {
    // In the zone that the process began in: what makes the words looks for it only once.
    EXPECT_EQ(formatter("MMM d HH:mm", std::nullopt).stringFromDate(at(1625140800)),
              "Jul " + formatter("d HH:mm", std::nullopt).stringFromDate(at(1625140800)));
}

TEST(NSDateFormatter, ReadsStrictly) {
    struct Case {
        const char* text;
        std::optional<Date> date;
    };
    const Case cases[] = {
        {"2021-03-04T05:06:07.123456Z", at(1614834367, 123'000'000)},
        {"2021-03-04T05:06:07.123999Z", at(1614834367, 123'000'000)},
        {"2021-03-04T05:06:07.1Z", at(1614834367, 100'000'000)},
        {"2021-03-04T05:06:07.12345678901234567890Z", at(1614834367, 123'000'000)},
        {"2020-02-29T23:59:59.0Z", at(1583020799)},
        {"1969-12-31T23:59:59.999Z", at(-1, 999'000'000)},
        {"2021-03-04T05:06:07Z", std::nullopt},
        {"2021-03-04T05:06:07.Z", std::nullopt},
        {"2021-13-04T05:06:07.1Z", std::nullopt},
        {"2021-00-04T05:06:07.1Z", std::nullopt},
        {"2021-02-30T05:06:07.1Z", std::nullopt},
        {"2021-02-29T05:06:07.1Z", std::nullopt},
        {"2021-03-04T24:06:07.1Z", std::nullopt},
        {"2021-03-04T05:60:07.1Z", std::nullopt},
        {"2021-03-04T05:06:60.1Z", std::nullopt},
        {"2021-3-04T05:06:07.1Z", std::nullopt},
        {"2021-03-4T05:06:07.1Z", std::nullopt},
        {"2021-03-04 05:06:07.1Z", std::nullopt},
        {"2021-03-04T05:06:07.1z", std::nullopt},
        {"2021-03-04T05:06:07.1Zx", std::nullopt},
        {" 2021-03-04T05:06:07.1Z", std::nullopt},
        {"2021-03-04T05:06:07.1Z ", std::nullopt},
        {"2021-03-04T05:06:07.1", std::nullopt},
        {"-021-03-04T05:06:07.1Z", std::nullopt},
        {"2021-+3-04T05:06:07.1Z", std::nullopt},
        {"999999999999-03-04T05:06:07.1Z", std::nullopt},
        {"", std::nullopt},
    };
    const NSDateFormatter reader = formatter(kTimestamp);
    for (const auto& [text, date] : cases) EXPECT_EQ(reader.dateFromString(text), date) << "'" << text << "'";
    ASSERT_TRUE(reader.dateFromString("21-03-04T05:06:07.1Z")) << "the year 21, which only Date can't hold";
    EXPECT_LT(*reader.dateFromString("21-03-04T05:06:07.1Z"), at(-9'000'000'000));
}

TEST(NSDateFormatter, ReadsOtherPatternsAndZones) {
    EXPECT_EQ(formatter("yyyyMMddHHmmss").dateFromString("20210304050607"), at(1614834367));
    EXPECT_EQ(formatter("yyyy-MM-dd HH:mm:ssZZZ").dateFromString("2021-03-04 10:51:07+0545"), at(1614834367));
    EXPECT_EQ(formatter("yyyy-MM-dd HH:mm:ss", 20700).dateFromString("2021-03-04 10:51:07"), at(1614834367));
    EXPECT_EQ(formatter("d MMMM yyyy").dateFromString("4 March 2021"), at(1614816000));
    EXPECT_EQ(formatter("d MMMM yyyy").dateFromString("4 March 2021 "), std::nullopt);
    EXPECT_EQ(formatter("").dateFromString(""), std::nullopt);

    const TimeZoneGuard guard("Europe/Berlin");
    const NSDateFormatter local = formatter("yyyy-MM-dd HH:mm", std::nullopt);
    EXPECT_EQ(local.dateFromString("2021-07-01 12:00"), at(1625133600)) << "summer";
    EXPECT_EQ(local.dateFromString("2021-01-01 12:00"), at(1609498800)) << "winter";
    EXPECT_EQ(local.dateFromString("2021-10-31 02:30"), at(1635640200)) << "the first of two";
    EXPECT_EQ(local.dateFromString("2021-03-28 02:30"), at(1616895000)) << "skipped: as far behind the gap";
}

TEST(NSDateFormatter, RoundTripsEveryHourOfAYearInTheZoneOfTheProcess) {
    const TimeZoneGuard guard("Australia/Lord_Howe");  // half an hour of summer time
    const NSDateFormatter local = formatter("yyyy-MM-dd HH:mm:ss.SSSZZZ", std::nullopt);
    for (std::int64_t hour = 0; hour < 366 * 24; ++hour) {
        const Date date = at(1609459200 + hour * 3600 + hour % 60, hour % 1000 * 1'000'000);
        const std::string text = local.stringFromDate(date);
        ASSERT_EQ(local.dateFromString(text), date) << text;
    }
}

TEST(NSDateFormatter, ServesSeveralThreadsAtOnce) {
    const NSDateFormatter numbers = formatter(kTimestamp);
    const NSDateFormatter words = formatter("EEE d MMM yyyy");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            for (int day = 0; day < 200; ++day) {
                const Date date = at(86400LL * (day + i * 200));
                EXPECT_EQ(numbers.dateFromString(numbers.stringFromDate(date)), date);
                EXPECT_EQ(words.dateFromString(words.stringFromDate(date)), date);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace zqcore::platform
