#include <chrono>
#include <cstdio>

#include "Classes/Core/Utility/GCDTimer.h"
#include "TestKit/ManualClock.h"

int main() {
    using namespace zqcore;
    testkit::ManualClock clock;
    int fired = 0;
    const auto timer =
        GCDTimer::make(60.0, true, DispatchQueue::serial("timer"), [&fired](GCDTimer&) { ++fired; });
    timer->fire();
    clock.advance(std::chrono::minutes(3));
    std::printf("fired %d times in three minutes\n", fired);
    return fired == 3 ? 0 : 1;
}
