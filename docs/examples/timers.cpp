// docs/examples/timers.cpp
#include <cstdio>

#include "Classes/Core/Utility/DateExtension.h"
#include "Classes/Core/Utility/GCDTimer.h"
#include "Classes/Core/Utility/ZQQueue.h"
#include "Classes/Core/Utility/ZQTrigger.h"
#include "Platform/Dispatch/RunLoop.h"

int main() {
    using namespace zqcore;
    int beats = 0;
    const auto timer = GCDTimer::make(0.05, /*repeats=*/true, DispatchQueue::main(), [&](GCDTimer& self) {
        std::printf("beat %d\n", ++beats);
        if (beats < 2) return;
        self.invalidate();
        RunLoop::main().stop();
    });
    ZQQueue::globalSerialQueue()->async([&] {
        std::puts("in order");                         // => in order
        ZQExecuteInMainQueue([&] { timer->fire(); });  // => beat 1
    });                                                // => beat 2
    RunLoop::main().run();

    const auto tip = [] { std::puts("the tip of the day"); };
    ZQTrigger::triggerOnceForNumberOfDateDay(1, "tip", tip);  // => the tip of the day
    ZQTrigger::triggerOnceForNumberOfDateDay(1, "tip", tip);  // not again today
    const Date date = dateSince1970(1614834367);
    std::puts(zq_dateString(date, "yyyy-MM-dd HH:mm", /*useUTC=*/true).c_str());  // => 2021-03-04 05:06
}
