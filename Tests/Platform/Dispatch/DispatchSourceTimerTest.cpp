#include "Platform/Dispatch/DispatchSourceTimer.h"

#include <gtest/gtest.h>

#include <malloc.h>

#include <latch>
#include <semaphore>
#include <vector>

#include "Platform/Dispatch/RunLoop.h"
#include "TestKit/LifeProbe.h"
#include "TestKit/ManualClock.h"

namespace zqcore {
namespace {

using namespace std::chrono_literals;
using Duration = Clock::Duration;
using Durations = std::vector<Duration>;

class DispatchSourceTimerTest : public testing::Test {
  protected:
    std::shared_ptr<DispatchSourceTimer> timer(DispatchTime start, Duration interval,
                                               std::function<void()> handler) {
        auto made = DispatchSourceTimer::make(queue_);
        made->schedule(start, interval);
        made->setEventHandler(std::move(handler));
        made->resume();
        return made;
    }
    std::shared_ptr<DispatchSourceTimer> recorder(DispatchTime start, Duration interval) {
        return timer(start, interval, [this] { fired_.push_back(elapsed()); });
    }
    [[nodiscard]] Duration elapsed() const { return clock_.now() - begin_; }

    testkit::ManualClock clock_;
    const Clock::Instant begin_ = clock_.now();
    std::shared_ptr<DispatchQueue> queue_ = DispatchQueue::serial("timers");
    Durations fired_;
};

TEST_F(DispatchSourceTimerTest, FiresAtStartAndThenAtWholeIntervals) {
    struct Case {
        const char* what;
        Duration start, interval, advance;
        Durations expected;
    };
    const Case cases[] = {
        {"repeating", 2s, 3s, 9s, {2s, 5s, 8s}},
        {"start now", 0s, 1s, 2s, {0s, 1s, 2s}},
        {"start in the past is due at once, then the grid goes on", -1500ms, 1s, 2s, {0s, 500ms, 1500ms}},
        {"once", 1s, Duration::max(), 1h, {1s}},
        {"never before", 1s, 1s, 1s - 1ns, {}},
        {"interval 0 counts as 1 ns, in steps of 100 us here", 1ns, 0ns, 200us, {1ns, 100001ns}},
        {"negative interval: once at once", 5s, -1s, 1h, {0s}},
        {"start before all time", Duration::min(), Duration::max() - 1ns, 1h, {0s}},
        {"start beyond all time", Duration::max(), 1s, 1h, {}},
    };
    for (const DispatchTime::Base base : {DispatchTime::Base::monotonic, DispatchTime::Base::wall}) {
        for (const Case& c : cases) {
            fired_.clear();
            const Duration offset = elapsed();
            const auto source = recorder(base == DispatchTime::Base::wall ? DispatchTime::wallNow(c.start)
                                                                          : DispatchTime::now(c.start),
                                         c.interval);
            clock_.advance(c.advance);
            for (Duration& at : fired_) at -= offset;
            EXPECT_EQ(fired_, c.expected) << c.what;
        }
    }
}

TEST_F(DispatchSourceTimerTest, MissedFiringsComeAsOneAndTheGridStays) {
    std::latch stepped(1);
    bool blockedOnce = false;
    const auto source = timer(DispatchTime::now(1s), 1s, [&] {
        fired_.push_back(elapsed());
        if (std::exchange(blockedOnce, true)) return;
        const DispatchBlockingScope scope;
        stepped.wait();
    });
    clock_.advance(4500ms);
    EXPECT_EQ(fired_, (Durations{1s}));
    stepped.count_down();
    queue_->sync([] {});
    EXPECT_EQ(fired_, (Durations{1s, 4500ms})) << "2, 3 and 4 s as one call";
    clock_.advance(500ms);
    EXPECT_EQ(fired_, (Durations{1s, 4500ms, 5s}));
}

TEST_F(DispatchSourceTimerTest, AHandlerNeverRunsBesideItselfOnAGlobalQueue) {
    queue_ = DispatchQueue::global();
    std::latch stepped(1);
    std::counting_semaphore<> firedAgain{0};
    bool blockedOnce = false;
    const auto source = timer(DispatchTime::now(1s), 1s, [&] {
        fired_.push_back(elapsed());
        if (std::exchange(blockedOnce, true)) return firedAgain.release();
        const DispatchBlockingScope scope;
        stepped.wait();
    });
    clock_.advance(4500ms);
    EXPECT_EQ(fired_, (Durations{1s}));
    stepped.count_down();
    firedAgain.acquire();
    clock_.advance(500ms);
    EXPECT_EQ(fired_, (Durations{1s, 4500ms, 5s}));
}

TEST_F(DispatchSourceTimerTest, SettingTheWallMovesWallDeadlinesOnly) {
    int wall = 0;
    int monotonic = 0;
    const auto onWall = timer(DispatchTime::wallNow(1h), Duration::max(), [&] { ++wall; });
    const auto onMonotonic = timer(DispatchTime::now(1h), Duration::max(), [&] { ++monotonic; });
    clock_.setWall(clock_.wallNow() - 1h);
    clock_.advance(1h);
    EXPECT_EQ(wall, 0);
    EXPECT_EQ(monotonic, 1);
    clock_.setWall(clock_.wallNow() + 1h);
    EXPECT_EQ(wall, 1) << "passed by the setting itself";
}

TEST_F(DispatchSourceTimerTest, CancelledOnItsQueueNoneFollowsAndTheHandlerEnds) {
    testkit::LifeProbe probe;
    const auto counts = probe.counts();
    std::shared_ptr<DispatchSourceTimer> source = DispatchSourceTimer::make(queue_);
    source->schedule(DispatchTime::now(1s), 1s);
    source->setEventHandler([&, kept = std::move(probe)] {
        fired_.push_back(elapsed());
        if (fired_.size() == 2) source->cancel();
    });
    source->resume();
    source->resume();
    clock_.advance(10s);
    EXPECT_EQ(fired_, (Durations{1s, 2s}));
    source->cancel();
    EXPECT_EQ(counts->alive, 0) << "a cancelled source keeps nothing of its handler";

    const auto early = recorder(DispatchTime::now(1s), 1s);
    early->cancel();
    early->resume();
    clock_.advance(10s);
    EXPECT_EQ(fired_.size(), 2U);
}

TEST_F(DispatchSourceTimerTest, CancelledWhileItsFiringIsQueuedItStaysSilent) {
    std::latch held(1);
    queue_->async([&] {
        const DispatchBlockingScope scope;
        held.wait();
    });
    auto cancelled = recorder(DispatchTime::now(1s), 1s);
    auto dropped = recorder(DispatchTime::now(1s), 1s);
    clock_.advance(1s);
    cancelled->cancel();
    dropped.reset();
    held.count_down();
    queue_->sync([] {});
    clock_.advance(10s);
    EXPECT_TRUE(fired_.empty());
}

TEST_F(DispatchSourceTimerTest, DroppedInItsOwnHandlerItEndsThere) {
    auto source = DispatchSourceTimer::make(queue_);
    source->schedule(DispatchTime::now(1s), 1s);
    source->setEventHandler([&] {
        fired_.push_back(elapsed());
        source.reset();
    });
    source->resume();
    clock_.advance(5s);
    EXPECT_EQ(fired_, (Durations{1s}));
}

TEST_F(DispatchSourceTimerTest, DeadlinesComeInOrderOnTheirQueuesAndMayAddMore) {
    std::vector<std::string> order;
    const auto note = [&](std::string what) { return [&order, what] { order.push_back(what); }; };
    const auto other = DispatchQueue::serial("other");
    other->after(DispatchTime::now(3s), note("3 other"));
    queue_->after(DispatchTime::wallNow(2s), [&] {
        order.push_back("2 wall");
        DispatchQueue::main()->after(DispatchTime::now(500ms), note("2.5 main"));
    });
    DispatchQueue::global()->after(DispatchTime::now(1s), note("1 global"));
    queue_->after(DispatchTime::now(3s), note("3 queue"));
    queue_->after(DispatchTime::now(-1s), note("at once"));
    clock_.advance(3s);
    EXPECT_EQ(order,
              (std::vector<std::string>{"at once", "1 global", "2 wall", "2.5 main", "3 other", "3 queue"}));
}

TEST_F(DispatchSourceTimerTest, TenThousandTimersFireOnceEachInTurnBelowOneKilobyte) {
    constexpr int kTimers = 10'000;
    std::vector<std::shared_ptr<DispatchSourceTimer>> timers;
    timers.reserve(kTimers);
    std::vector<int> order;
    order.reserve(kTimers);
    const std::size_t before = mallinfo2().uordblks;
    for (int i = 0; i < kTimers; ++i) {
        // 7919 is prime to the count: every millisecond once, out of order.
        const int slot = i * 7919 % kTimers;
        timers.push_back(timer(DispatchTime::now(std::chrono::milliseconds(slot)), Duration::max(),
                               [&order, slot] { order.push_back(slot); }));
    }
    const std::size_t each = (mallinfo2().uordblks - before) / kTimers;
    EXPECT_LT(each, 1024U);
    for (int i = 0; i < kTimers; i += 2) timers[static_cast<std::size_t>(i)].reset();
    clock_.advance(10s);
    EXPECT_EQ(order.size(), kTimers / 2U);
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(DeadlineSchedulerTest, AnEarlierDeadlineSetWhileItWaitsForALaterOneIsKept) {
    // The system's own clock and thread: here alone real time passes, some milliseconds of it.
    const auto queue = DispatchQueue::serial("real");
    std::latch fired(3);
    const auto late = DispatchSourceTimer::make(queue);
    late->schedule(DispatchTime::now(1h), 1h);
    late->setEventHandler([] { ADD_FAILURE() << "an hour early"; });
    late->resume();
    queue->after(DispatchTime::now(20ms), [&] { fired.count_down(); });
    queue->after(DispatchTime::now(2ms), [&] { fired.count_down(); });
    queue->after(DispatchTime::wallNow(1ms), [&] { fired.count_down(); });
    fired.wait();
}

}  // namespace
}  // namespace zqcore
