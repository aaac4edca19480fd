#include "Classes/Core/Utility/GCDTimer.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <thread>
#include <vector>

#include "Classes/Core/Utility/DispatchTimeLiterals.h"
#include "TestKit/ManualClock.h"

namespace zqcore {
namespace {

using namespace std::chrono_literals;

class GCDTimerTest : public testing::Test {
  protected:
    std::shared_ptr<GCDTimer> timer(double interval, bool repeats, GCDTimer::Handler extra = nullptr) {
        return GCDTimer::make(interval, repeats, queue_, [this, extra = std::move(extra)](GCDTimer& self) {
            EXPECT_EQ(DispatchQueue::currentLabel(), "timer");
            ++fired_;
            if (extra) extra(self);
        });
    }

    testkit::ManualClock clock_;
    std::shared_ptr<DispatchQueue> queue_ = DispatchQueue::serial("timer");
    int fired_ = 0;
};

TEST_F(GCDTimerTest, FiresOneIntervalAfterFireAndEndsWithItsOwner) {
    auto repeating = timer(1.0, true);
    repeating->fire();
    clock_.advance(999ms);
    EXPECT_EQ(fired_, 0) << "never before the interval";
    clock_.advance(1ms);
    EXPECT_EQ(fired_, 1);
    repeating->fire();
    clock_.advance(2s);
    EXPECT_EQ(fired_, 3) << "a second fire() starts no second source";
    repeating.reset();
    clock_.advance(10s);
    EXPECT_EQ(fired_, 3) << "the last reference went, so the timer did";
}

TEST_F(GCDTimerTest, OnceIsOnceAndADeadTimerStaysDead) {
    const auto once = timer(1.0, false);
    once->fire();
    clock_.advance(10s);
    EXPECT_EQ(fired_, 1);
    once->fire();
    clock_.advance(10s);
    EXPECT_EQ(fired_, 1);

    const auto never = timer(1.0, true);
    never->invalidate();
    never->fire();
    clock_.advance(10s);
    EXPECT_EQ(fired_, 1) << "invalidated before its start";

    const auto stopsItself = timer(1.0, true, [](GCDTimer& self) { self.invalidate(); });
    stopsItself->fire();
    clock_.advance(10s);
    EXPECT_EQ(fired_, 2);
}

TEST_F(GCDTimerTest, GoesByTheWall) {
    const auto once = timer(3600.0, false);
    once->fire();
    clock_.setWall(clock_.wallNow() + 59min);
    clock_.advance(1min - 1ns);
    EXPECT_EQ(fired_, 0);
    clock_.advance(1ns);
    EXPECT_EQ(fired_, 1);
}

TEST_F(GCDTimerTest, OddIntervalsGoToTheSourceAsTheyAre) {
    const auto negative = timer(-5.0, true);
    negative->fire();
    clock_.advance(1h);
    EXPECT_EQ(fired_, 1) << "once at once";
    const auto endless = timer(std::numeric_limits<double>::infinity(), true);
    endless->fire();
    clock_.advance(1h);
    EXPECT_EQ(fired_, 1);
    const auto zero = timer(0.0, true, [this](GCDTimer& self) {
        if (fired_ == 11) self.invalidate();
    });
    zero->fire();
    clock_.advance(10ms);
    EXPECT_EQ(fired_, 11);
}

TEST_F(GCDTimerTest, WithoutAQueueTheHandlerRunsOnTheGlobalOne) {
    std::string label;
    const auto lost =
        GCDTimer::make(1.0, false, nullptr, [&](GCDTimer&) { label = DispatchQueue::currentLabel(); });
    EXPECT_EQ(lost->queue, DispatchQueue::global());
    lost->fire();
    clock_.advance(1s);
    EXPECT_EQ(label, "com.apple.root.default-qos");
    const auto mute = GCDTimer::make(1.0, true, nullptr, nullptr);
    mute->fire();
    clock_.advance(3s);
}

TEST_F(GCDTimerTest, FireAndInvalidateRaceHarmlessly) {
    for (int i = 0; i < 200; ++i) {
        const auto contested = timer(0.001, true);
        std::jthread starter([&] { contested->fire(); });
        contested->invalidate();
    }
    clock_.advance(1s);
    EXPECT_EQ(fired_, 0);
}

TEST_F(GCDTimerTest, NoneOfTenThousandMissesOrDoublesAFiring) {
    constexpr int kTimers = 10'000;
    struct Storm {
        std::shared_ptr<GCDTimer> timer;
        int fired = 0;
        int misplaced = 0;
    };
    std::vector<Storm> storms(kTimers);
    const auto start = clock_.now();
    const auto period = [](int index) { return 1ms * (20 + index % 83); };
    for (int i = 0; i < kTimers; ++i) {
        auto& storm = storms[static_cast<std::size_t>(i)];
        const double interval = std::chrono::duration<double>(period(i)).count();
        // Half of them once, on two queues.
        storm.timer = GCDTimer::make(interval, i % 2 == 0, i % 3 == 0 ? DispatchQueue::global() : queue_,
                                     [&storm, &clock = clock_, start, every = period(i)](GCDTimer&) {
                                         ++storm.fired;
                                         if (clock.now() - start != storm.fired * every) ++storm.misplaced;
                                     });
        storm.timer->fire();
    }
    clock_.advance(300ms);
    int wrong = 0;
    for (int i = 0; i < kTimers; ++i) {
        const auto& storm = storms[static_cast<std::size_t>(i)];
        const auto due = i % 2 == 0 ? 300ms / period(i) : 1;
        if (storm.fired != due || storm.misplaced != 0) ++wrong;
    }
    EXPECT_EQ(wrong, 0);
    for (auto& storm : storms) storm.timer.reset();
    clock_.advance(1s);
}

TEST_F(GCDTimerTest, LiteralsCountFromNow) {
    using namespace literals;
    const auto sinceNow = [](DispatchTime time) { return time.at - DispatchTime::now().at; };
    EXPECT_EQ(sinceNow(2_fromNow), 2s);
    EXPECT_EQ(sinceNow(1.9999_fromNow), 1999ms) << "cut to whole milliseconds";
    EXPECT_EQ(sinceNow(DispatchTimeLiteral::floating(-0.0019)), -1ms);
    for (int count = 0; count < 4000; ++count)
        EXPECT_EQ(sinceNow(DispatchTimeLiteral::floating((count + 0.5) / 1000.0)), count * 1ms);
    EXPECT_EQ(sinceNow(DispatchTimeLiteral::integer(-3)), -3s);
    EXPECT_EQ((2_fromNow).base, DispatchTime::Base::monotonic);
}

}  // namespace
}  // namespace zqcore
