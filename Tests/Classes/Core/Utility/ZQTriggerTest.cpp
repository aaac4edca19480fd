#include "Classes/Core/Utility/ZQTrigger.h"

#include <gtest/gtest.h>

#include <limits>

#include "Platform/Foundation/NSUserDefaults.h"
#include "TestKit/FakeBundle.h"
#include "TestKit/ManualClock.h"
#include "TestKit/TemporaryHome.h"
#include "TestKit/TimeZoneGuard.h"

namespace zqcore {
namespace {

using namespace std::chrono_literals;

class ZQTriggerTest : public testing::Test {
  protected:
    // The standard settings are one object for the process, so each test starts from empty ones.
    ZQTriggerTest() {
        for (const auto& [key, value] : defaults().dictionaryRepresentation())
            defaults().removeObjectForKey(key);
    }
    static NSUserDefaults& defaults() { return *NSUserDefaults::standardUserDefaults(); }
    bool triggered(std::uint64_t count = 1) {
        return call(
            [&](auto... actions) { ZQTrigger::triggerOnceForNumberOf24Hour(count, "key", actions...); });
    }
    bool triggeredByDay(std::uint64_t count = 1) {
        return call(
            [&](auto... actions) { ZQTrigger::triggerOnceForNumberOfDateDay(count, "key", actions...); });
    }
    template <class F>
    bool call(F trigger) {
        int executed = 0;
        int cancelled = 0;
        trigger([&] { ++executed; }, [&] { ++cancelled; });
        EXPECT_EQ(executed + cancelled, 1) << "exactly one of the two";
        return executed == 1;
    }

    static inline const testkit::TemporaryHome* home_ = nullptr;
    static inline const testkit::FakeBundle* bundle_ = nullptr;
    static void SetUpTestSuite() {
        home_ = new testkit::TemporaryHome;
        bundle_ = new testkit::FakeBundle(testkit::FakeBundle::named("com.example.trigger"));
    }
    static void TearDownTestSuite() {
        // What waits to be written would make the home again when the process ends.
        defaults().synchronize();
        delete bundle_;
        delete home_;
    }

    testkit::TimeZoneGuard zone_{"Europe/Berlin"};
    testkit::ManualClock clock_;
};

TEST_F(ZQTriggerTest, FiresOncePerPeriodAndNotAtItsExactEnd) {
    EXPECT_TRUE(triggered());
    EXPECT_EQ(defaults().objectForKey("ZQTrigger_key"),
              Value(secondsSince1970(testkit::ManualClock::kStart)));
    clock_.advance(24h);
    EXPECT_FALSE(triggered());
    clock_.advance(1ms);
    EXPECT_FALSE(triggered(2));
    EXPECT_TRUE(triggered());
    EXPECT_FALSE(triggered()) << "counted from the last firing";
    ZQTrigger::resetWithKey("key");
    EXPECT_TRUE(triggered());
    clock_.advance(1h);
    ZQTrigger::triggerOnceForNumberOf24Hour(1, "key", [] { ADD_FAILURE() << "too early"; });
    EXPECT_EQ(defaults().objectForKey("ZQTrigger_key"), Value(secondsSince1970(clock_.wallNow() - 1h)))
        << "cancelling stores nothing";
}

TEST_F(ZQTriggerTest, DateDayCountsFromTheStartOfTheDayOfTheZone) {
    // 2024-03-30 23:50 in Berlin; the next day has 23 hours.
    clock_.setWall(dateSince1970(1'711'839'000));
    EXPECT_TRUE(triggeredByDay());
    EXPECT_EQ(defaults().objectForKey("ZQTrigger_key"), Value(1'711'753'200.0));
    clock_.advance(10min);
    EXPECT_FALSE(triggeredByDay()) << "midnight itself";
    clock_.advance(1ms);
    EXPECT_TRUE(triggeredByDay());
    clock_.advance(23h);
    EXPECT_FALSE(triggeredByDay()) << "a period is 24 hours, also after a day of 23";
    clock_.advance(1h);
    EXPECT_TRUE(triggeredByDay());
}

TEST_F(ZQTriggerTest, OddArgumentsAndStoredValues) {
    const auto never = [] { ADD_FAILURE() << "neither may be called"; };
    ZQTrigger::triggerOnceForNumberOf24Hour(0, "key", never, never);
    ZQTrigger::triggerOnceForNumberOfDateDay(1, "", never, never);
    ZQTrigger::resetWithKey("");
    EXPECT_TRUE(defaults().dictionaryRepresentation().empty());

    defaults().setObject("yesterday", "ZQTrigger_key");
    EXPECT_TRUE(triggered()) << "no number counts as no value";
    defaults().setInteger(static_cast<std::int64_t>(secondsSince1970(clock_.wallNow())), "ZQTrigger_key");
    EXPECT_FALSE(triggered());
    EXPECT_FALSE(triggered(std::numeric_limits<std::uint64_t>::max()));
}

TEST_F(ZQTriggerTest, ResetAllForgetsItsOwnKeysAlone) {
    EXPECT_TRUE(triggered());
    defaults().setInteger(1, "ZQTrigger");
    defaults().setInteger(1, "MyZQTrigger_key");
    ZQTrigger::triggerOnceForNumberOf24Hour(1, "nested", [] { ZQTrigger::resetAll(); });
    EXPECT_EQ(defaults().dictionaryRepresentation().size(), 2U);
    EXPECT_TRUE(triggered());
}

}  // namespace
}  // namespace zqcore
