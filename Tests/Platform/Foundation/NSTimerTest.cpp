#include "Platform/Foundation/NSTimer.h"

#include <gtest/gtest.h>

#include <string>

#include "Platform/Dispatch/RunLoop.h"
#include "TestKit/ManualClock.h"

namespace zqcore::platform {
namespace {

using namespace std::chrono_literals;

class NSTimerTest : public testing::Test {
  protected:
    ~NSTimerTest() override { NSTimer::invalidateAllForTesting(); }
    std::shared_ptr<NSTimer> add(double interval, bool repeats, const char* name) {
        return NSTimer::scheduledTimerWithTimeInterval(interval, repeats,
                                                       [this, name](NSTimer&) { log_ += name; });
    }

    testkit::ManualClock clock_;
    std::string log_;
};

TEST_F(NSTimerTest, FiresInTheOrderOfDeadlinesAndThenOfAdding) {
    add(3, false, "d");
    add(2, false, "b");
    const auto ended = add(1, true, "x");
    const auto repeating = add(1, true, "a");
    add(2, false, "c");
    ended->invalidate();
    clock_.advance(2s);
    EXPECT_EQ(log_, "abac") << "a repeating one keeps its place among those that are due at once";
}

TEST_F(NSTimerTest, WaitsForItsModeAndMissedFiringsComeAsOne) {
    const auto repeating = add(1, true, "r");
    const auto always = NSTimer::timerWithTimeInterval(10, true, [this](NSTimer&) { log_ += "c"; });
    always->addToMainRunLoop(NSRunLoopMode::commonModes);
    NSTimer::setMainRunLoopMode(NSRunLoopMode::eventTracking);
    clock_.advance(10s);
    EXPECT_EQ(log_, "c");
    NSTimer::setMainRunLoopMode(NSRunLoopMode::defaultMode);
    clock_.waitUntilQuiet();
    EXPECT_EQ(log_, "cr");
    clock_.advance(1s);
    EXPECT_EQ(log_, "crr");
}

TEST_F(NSTimerTest, AFiringMayAddAndInvalidateOthers) {
    const auto doomed = add(1.5, true, "x");
    NSTimer::scheduledTimerWithTimeInterval(1, false, [&](NSTimer& self) {
        log_ += "1";
        doomed->invalidate();
        add(0.25, false, "2");
        self.invalidate();
    });
    clock_.advance(5s);
    EXPECT_EQ(log_, "12");
}

}  // namespace
}  // namespace zqcore::platform
