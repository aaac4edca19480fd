#include "Platform/Lumberjack/Linux/LogQueue.h"

#include <gtest/gtest.h>

#include "Platform/Dispatch/DispatchSourceTimer.h"
#include "TestKit/ManualClock.h"

namespace zqcore::platform {
namespace {

using namespace std::chrono_literals;

TEST(LogQueueTest, AStepOfTheClockWaitsForEachFiringOfItsTimers) {
    testkit::ManualClock clock;
    const auto timer = DispatchSourceTimer::make(LogQueue::shared().shared_from_this());
    int firings = 0;
    timer->schedule(DispatchTime::now(1h), 1h);
    timer->setEventHandler([&] {
        ++firings;
        clock.waitUntilQuiet();
    });
    timer->resume();
    clock.advance(240h);
    EXPECT_EQ(firings, 240);
    timer->cancel();
}

}  // namespace
}  // namespace zqcore::platform
