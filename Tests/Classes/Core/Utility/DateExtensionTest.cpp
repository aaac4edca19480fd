#include "Classes/Core/Utility/DateExtension.h"

#include <gtest/gtest.h>

#include <array>

#include "TestKit/TimeZoneGuard.h"

namespace zqcore {
namespace {

using namespace std::chrono_literals;

Date at(long long seconds, std::chrono::nanoseconds fraction = 0ns) {
    return Date(std::chrono::seconds(seconds) + fraction);
}

TEST(DateExtensionTest, WritesInThePatternOfTheZone) {
    const testkit::TimeZoneGuard zone("America/St_Johns");
    const Date date = at(1'704'164'645);
    EXPECT_EQ(zq_dateString(date, "yyyy-MM-dd HH:mm:ss ZZZ", true), "2024-01-02 03:04:05 +0000");
    EXPECT_EQ(zq_dateString(date, "yyyy-MM-dd HH:mm:ss ZZZ", false), "2024-01-01 23:34:05 -0330");
    EXPECT_EQ(zq_dateString(date, "EEEE d MMMM, h a", true), "Tuesday 2 January, 3 AM");
    EXPECT_EQ(zq_dateString(date, "", true), "");

    struct Case {
        std::chrono::nanoseconds fraction;
        const char* text;
    };
    for (const auto& [fraction, text] : {Case{499'999ns, "05.000000"},
                                         {500'000ns, "05.001000"},
                                         {123'456'789ns, "05.123000"},
                                         {999'600'000ns, "06.000000"}}) {
        EXPECT_EQ(zq_dateString(date + fraction, "ss.SSSSSS", true), text) << fraction.count();
    }
    EXPECT_EQ(zq_dateString(at(-1, 999ms), "yyyy HH:mm:ss.SSS", true), "1969 23:59:59.999");
}

TEST(DateExtensionTest, DayBeginsAtItsFirstMomentInEveryZone) {
    struct Case {
        const char* zone;
        long long inside, start;
    };
    for (const auto& [zone, inside, start] : {
             Case{"Asia/Kathmandu", 1'704'164'645, 1'704'132'900},
             // 2024-03-31 in Berlin, a day of 23 hours, and 2024-10-27, one of 25.
             Case{"Europe/Berlin", 1'711'915'200, 1'711'839'600},
             Case{"Europe/Berlin", 1'730'069'999, 1'729'980'000},
             // 2018-11-04 in Sao Paulo begins at one o'clock; 2023-11-05 in Havana has midnight twice.
             Case{"America/Sao_Paulo", 1'541'340'000, 1'541'300'400},
             Case{"America/Havana", 1'699'200'000, 1'699'156'800},
             Case{"America/Havana", 1'699'160'400, 1'699'156'800},
             // Midnight itself, and the last second before.
             Case{"UTC", 1'704'153'600, 1'704'153'600},
             Case{"UTC", 1'704'153'599, 1'704'067'200},
             Case{"UTC", -1, -86'400},
         }) {
        const testkit::TimeZoneGuard guard(zone);
        EXPECT_EQ(zq_beginningDate(at(inside, 5ns)), at(start)) << zone << " " << inside;
    }
}

TEST(DateExtensionTest, PartsAreThoseOfTheZone) {
    const testkit::TimeZoneGuard zone("Asia/Kathmandu");
    const auto [year, mouth, day, hour, minute, second] = zq_parseDateComponets(at(1'704'047'399));
    EXPECT_EQ((std::array{year, mouth, day, hour, minute, second}), (std::array{2024, 1, 1, 0, 14, 59}));
}

}  // namespace
}  // namespace zqcore
