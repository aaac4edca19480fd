#include "Platform/Dispatch/RunLoop.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <thread>
#include <vector>

#include "Platform/Dispatch/DispatchQueue.h"
#include "TestKit/ManualClock.h"

namespace zqcore {
namespace {

using namespace std::chrono_literals;

bool isReadable(int fd) {
    pollfd polled{fd, POLLIN, 0};
    return poll(&polled, 1, 0) == 1;
}

class Pipe {
  public:
    Pipe() { EXPECT_EQ(pipe2(ends_.data(), O_CLOEXEC | O_NONBLOCK), 0); }
    ~Pipe() {
        close(ends_[0]);
        close(ends_[1]);
    }
    void put() { EXPECT_EQ(write(ends_[1], "x", 1), 1); }
    void take() {
        char byte = 0;
        EXPECT_EQ(read(ends_[0], &byte, 1), 1);
    }
    [[nodiscard]] int out() const { return ends_[0]; }

  private:
    std::array<int, 2> ends_{};
};

class RunLoopTest : public testing::Test {
  protected:
    static void submit(DispatchBlock block) { DispatchQueue::main()->async(std::move(block)); }
    RunLoop& loop_ = RunLoop::main();
    std::vector<int> order_;
};

TEST_F(RunLoopTest, ForeignHostSeesTheDescriptorReadableExactlyWhileThereIsWork) {
    EXPECT_FALSE(isReadable(loop_.fileDescriptor()));
    EXPECT_FALSE(loop_.drain());
    submit([&] {
        order_.push_back(1);
        EXPECT_TRUE(isReadable(loop_.fileDescriptor())) << "the second block waits";
        submit([&] { order_.push_back(3); });
    });
    submit([&] { order_.push_back(2); });
    ASSERT_TRUE(isReadable(loop_.fileDescriptor()));
    EXPECT_TRUE(loop_.drain());
    EXPECT_EQ(order_, (std::vector{1, 2})) << "a round takes what was there";
    ASSERT_TRUE(isReadable(loop_.fileDescriptor()));
    EXPECT_TRUE(loop_.drain());
    EXPECT_EQ(order_, (std::vector{1, 2, 3}));
    EXPECT_FALSE(isReadable(loop_.fileDescriptor()));

    // A host like any other: it polls and drains, while a thread submits.
    std::jthread producer([&] {
        for (int i = 0; i < 1000; ++i) submit([&, i] { order_.push_back(i); });
    });
    order_.clear();
    pollfd polled{loop_.fileDescriptor(), POLLIN, 0};
    while (order_.size() < 1000) {
        poll(&polled, 1, -1);
        loop_.drain();
    }
    EXPECT_TRUE(std::is_sorted(order_.begin(), order_.end()));
}

TEST_F(RunLoopTest, NestedRunGoesOnWithTheRestInOrderAndStopEndsTheInnermost) {
    submit([&] {
        order_.push_back(1);
        loop_.run();
        order_.push_back(4);
        loop_.stop();
    });
    submit([&] { order_.push_back(2); });
    submit([&] {
        order_.push_back(3);
        loop_.stop();
    });
    loop_.run();
    EXPECT_EQ(order_, (std::vector{1, 2, 3, 4}));
    loop_.stop();
    submit([&] {
        order_.push_back(5);
        loop_.stop();
    });
    loop_.run();
    EXPECT_EQ(order_.back(), 5) << "a stop without a run is not kept";
}

TEST_F(RunLoopTest, ForeignThreadsWakeAndStopIt) {
    for (int i = 0; i < 100; ++i) {
        std::jthread other([&] {
            submit([&] { order_.push_back(i); });
            DispatchQueue::main()->sync([&] { order_.push_back(i); });
            loop_.stop();
        });
        loop_.run();
    }
    EXPECT_EQ(order_.size(), 200U);
}

TEST_F(RunLoopTest, RunUntilEndsWithItsConditionOrItsLimitOfTheClock) {
    testkit::ManualClock clock;
    bool done = false;
    DispatchQueue::serial("worker")->async([&] { submit([&] { done = true; }); });
    EXPECT_TRUE(loop_.runUntil([&] { return done; }, 1h));

    // The limit comes when another thread steps the clock past it, no earlier.
    int rounds = 0;
    std::jthread stepper;
    submit([&] {
        stepper = std::jthread([&] {
            clock.advance(59s);
            submit([&] { ++rounds; });
            clock.advance(1s);
        });
    });
    EXPECT_FALSE(loop_.runUntil([] { return false; }, 60s));
    stepper.join();
    loop_.drain();
    EXPECT_EQ(rounds, 1);
    EXPECT_TRUE(loop_.runUntil([] { return true; }, -1s)) << "the condition is asked even past the limit";
}

TEST_F(RunLoopTest, WatchesTellReadyDescriptorsUntilTheyEnd) {
    Pipe first;
    Pipe second;
    std::unique_ptr<RunLoop::Watch> secondWatch;
    auto firstWatch = loop_.watch(first.out(), POLLIN, [&](short events) {
        EXPECT_EQ(events, POLLIN);
        first.take();
        order_.push_back(1);
        secondWatch.reset();
    });
    secondWatch = loop_.watch(second.out(), POLLIN, [&](short) {
        second.take();
        order_.push_back(2);
        firstWatch.reset();
    });
    EXPECT_FALSE(loop_.drain());
    first.put();
    second.put();
    EXPECT_TRUE(isReadable(loop_.fileDescriptor()));
    EXPECT_TRUE(loop_.drain());
    EXPECT_EQ(order_.size(), 1U) << "the first to run ended the other, which was ready as well";

    order_.clear();
    firstWatch.reset();
    secondWatch.reset();
    Pipe shared;
    const auto one = loop_.watch(shared.out(), POLLIN, [&](short) { order_.push_back(1); });
    auto two = loop_.watch(shared.out(), POLLIN, [&](short) { order_.push_back(2); });
    shared.put();
    loop_.drain();
    EXPECT_EQ(order_.size(), 2U) << "two watches of one descriptor";
    two.reset();
    loop_.drain();
    EXPECT_EQ(order_.size(), 3U);
    EXPECT_EQ(order_.back(), 1);
}

}  // namespace
}  // namespace zqcore
