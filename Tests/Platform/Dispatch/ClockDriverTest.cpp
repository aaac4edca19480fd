#include "Platform/Dispatch/ClockDriver.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <latch>
#include <thread>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/Linux/Futex.h"
#include "Platform/Dispatch/Linux/MainQueue.h"
#include "Platform/Dispatch/Linux/WorkerPool.h"
#include "Platform/Dispatch/RunLoop.h"

namespace zqcore {
namespace {

using namespace std::chrono_literals;

/// Under the system's clock: nothing is installed.
class ClockDriverTest : public testing::Test {
  protected:
    /// Waits for quiet on a thread of its own and lets `mayGoOn_` go at the waiter's last look before it
    /// sleeps. The pool's lock is held there, so what a worker does next can only find the waiter asleep.
    void startWaiting(std::function<bool()> interrupted = [] { return false; }) {
        waiter_ = std::async(std::launch::async, [this, interrupted = std::move(interrupted)] {
            WorkerPool::shared().waitUntilQuiet([&] {
                mayGoOn_.signal();
                return interrupted();
            });
        });
    }
    /// Whether the waiter was woken. One that was forgotten is let go, so that the test can end.
    bool waiterReturned() {
        if (waiter_.wait_for(20s) == std::future_status::ready) return true;
        while (waiter_.wait_for(10ms) != std::future_status::ready) WorkerPool::shared().pokeObservers();
        return false;
    }

    std::shared_ptr<DispatchQueue> queue_ = DispatchQueue::serial("test.quiet");
    OneShotSignal mayGoOn_;
    std::future<void> waiter_;
};

TEST_F(ClockDriverTest, TheEndOfTheLastBlockWakesTheWaiter) {
    queue_->async([this] { mayGoOn_.wait(); });
    startWaiting();
    EXPECT_TRUE(waiterReturned());
}

TEST_F(ClockDriverTest, ABlockForTheMainQueueWakesTheWaiter) {
    OneShotSignal ended;
    queue_->async([&] {
        mayGoOn_.wait();
        DispatchQueue::main()->async([&] { ended.signal(); });
        // Stays busy: only the main queue's own call can wake the waiter.
        ended.wait();
    });
    startWaiting([] { return MainQueue::shared().hasWork(); });
    EXPECT_TRUE(waiterReturned());
    EXPECT_TRUE(RunLoop::main().drain());
    ClockDriver::waitUntilQuiet();
}

TEST_F(ClockDriverTest, WhatStandsBehindASyncOfAPlainThreadIsWaitedFor) {
    std::latch inside(1);
    std::atomic<bool> ran{false};
    std::jthread plain([&] {
        queue_->sync([&] {
            inside.count_down();
            mayGoOn_.wait();
        });
    });
    inside.wait();
    queue_->async([&] { ran = true; });
    startWaiting();
    EXPECT_TRUE(waiterReturned());
    EXPECT_TRUE(ran);
}

TEST_F(ClockDriverTest, ABlockThatReturnsFromAMainSyncIsUnderWayAgain) {
    for (int round = 0; round < 2000; ++round) {
        std::atomic<bool> ended{false};
        queue_->async([&] {
            DispatchQueue::main()->sync([] {});
            ended = true;
        });
        ClockDriver::waitUntilQuiet();
        ASSERT_TRUE(ended) << round;
    }
}

TEST_F(ClockDriverTest, WhatFindsNoRoomBehindBlockedBlocksIsNotWaitedFor) {
    constexpr int kLimit = WorkerPool::kGlobalLimit;
    std::latch allHere(kLimit);
    std::latch released(1);
    std::latch ended(kLimit);
    for (int i = 0; i < kLimit; ++i) {
        DispatchQueue::global()->async([&] {
            {
                const DispatchBlockingScope scope;
                allHere.count_down();
                released.wait();
            }
            ended.count_down();
        });
    }
    allHere.wait();
    std::atomic<bool> ran{false};
    DispatchQueue::global()->async([&] { ran = true; });
    startWaiting();
    EXPECT_TRUE(waiterReturned());
    EXPECT_FALSE(ran);
    released.count_down();
    ended.wait();
    ClockDriver::waitUntilQuiet();
    EXPECT_TRUE(ran);
}

TEST_F(ClockDriverTest, WaitingInsideASyncDoesNotWaitForItself) {
    int order = 0;
    const auto other = DispatchQueue::serial("test.other");
    queue_->sync([&] {
        other->sync([&] {
            DispatchQueue::global()->async([&] { order = 1; });
            ClockDriver::waitUntilQuiet();
            EXPECT_EQ(order, 1);
        });
        other->async([&] { order = 2; });
        ClockDriver::waitUntilQuiet();
        EXPECT_EQ(order, 2);
    });
}

}  // namespace
}  // namespace zqcore
