#include "Platform/Dispatch/DispatchQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>
#include <vector>

#include "Platform/Dispatch/RunLoop.h"
#include "TestKit/LifeProbe.h"
#include "TestKit/ManualClock.h"

namespace zqcore {
namespace {

using namespace std::chrono_literals;

class DispatchQueueTest : public testing::Test {
  protected:
    testkit::ManualClock clock_;
    std::shared_ptr<DispatchQueue> queue_ = DispatchQueue::serial("test.queue", DispatchQoS::userInitiated);
};

TEST_F(DispatchQueueTest, KeepsTheOrderOfEachOfFourProducersAndRunsOneBlockAtATime) {
    constexpr int kBlocks = 20'000;
    std::atomic<int> inside{0};
    std::atomic<bool> overlapped{false};
    std::vector<int> last(4, -1);
    bool ordered = true;
    {
        std::vector<std::jthread> producers;
        for (int p = 0; p < 4; ++p) {
            producers.emplace_back([&, p] {
                for (int i = 0; i < kBlocks; ++i) {
                    queue_->async([&, p, i] {
                        if (inside.fetch_add(1) != 0) overlapped = true;
                        // Plain data: a second block at once would be a race that the sanitizer sees.
                        ordered = ordered && last[static_cast<std::size_t>(p)] == i - 1;
                        last[static_cast<std::size_t>(p)] = i;
                        inside.fetch_sub(1);
                    });
                }
            });
        }
    }
    clock_.waitUntilQuiet();
    EXPECT_FALSE(overlapped);
    EXPECT_TRUE(ordered);
    EXPECT_EQ(last, std::vector<int>(4, kBlocks - 1));
}

TEST_F(DispatchQueueTest, TimeOutOnASerialQueueFiresAtItsMoment) {
    int fired = 0;
    queue_->async([&] { queue_->after(DispatchTime::now(60s), [&] { ++fired; }); });
    clock_.advance(60s - 1ns);
    EXPECT_EQ(fired, 0);
    clock_.advance(1ns);
    EXPECT_EQ(fired, 1);
}

TEST_F(DispatchQueueTest, MainQueueRunsWhileTheMainThreadSteps) {
    std::vector<int> order;
    queue_->async([&] { DispatchQueue::main()->async([&] { order.push_back(2); }); });
    DispatchQueue::main()->after(DispatchTime::now(1s), [&] { order.push_back(3); });
    EXPECT_TRUE(order.empty());
    clock_.advance(1s);
    EXPECT_EQ(order, (std::vector{2, 3}));
}

}  // namespace
}  // namespace zqcore
