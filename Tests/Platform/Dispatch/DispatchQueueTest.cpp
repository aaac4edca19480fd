#include "Platform/Dispatch/DispatchQueue.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <array>
#include <atomic>
#include <barrier>
#include <latch>
#include <memory>
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
    // Plain data: two blocks at once would be a race that the thread sanitizer sees.
    std::array<int, 4> last{-1, -1, -1, -1};
    bool ordered = true;
    {
        std::vector<std::jthread> producers;
        for (int& lastOfMine : last) {
            producers.emplace_back([&] {
                for (int i = 0; i < kBlocks; ++i) {
                    queue_->async([&, i] {
                        if (inside.fetch_add(1) != 0) overlapped = true;
                        ordered = ordered && lastOfMine == i - 1;
                        lastOfMine = i;
                        inside.fetch_sub(1);
                    });
                    if (i % 1000 == 0) queue_->sync([&] { ordered = ordered && lastOfMine == i; });
                }
            });
        }
    }
    clock_.waitUntilQuiet();
    EXPECT_FALSE(overlapped);
    EXPECT_TRUE(ordered);
    EXPECT_EQ(last, (std::array{kBlocks - 1, kBlocks - 1, kBlocks - 1, kBlocks - 1}));
}

TEST_F(DispatchQueueTest, HundredThousandHopsBetweenQueuesArriveInTurn) {
    const std::array queues{DispatchQueue::serial("a"), DispatchQueue::serial("b"), DispatchQueue::main()};
    int hops = 0;
    std::function<void()> hop = [&] {
        if (++hops < 100'000) queues[static_cast<std::size_t>(hops) % 3]->async([&] { hop(); });
    };
    queues[0]->async([&] { hop(); });
    clock_.waitUntilQuiet();
    EXPECT_EQ(hops, 100'000);
}

TEST_F(DispatchQueueTest, WorkKeepsItsQueueAndADestructorMaySubmitMore) {
    struct Farewell {
        std::weak_ptr<DispatchQueue> queue;
        std::vector<int>* order;
        ~Farewell() {
            order->push_back(1);
            if (const auto kept = queue.lock()) kept->async([order = order] { order->push_back(3); });
        }
    };
    std::vector<int> order;
    std::latch released(1);
    queue_->async([&] { released.wait(); });
    queue_->async([farewell = std::make_unique<Farewell>(queue_, &order)] {});
    queue_->async([&order] { order.push_back(2); });
    const std::weak_ptr<DispatchQueue> watched = queue_;
    queue_.reset();
    EXPECT_FALSE(watched.expired()) << "work is queued";
    released.count_down();
    clock_.waitUntilQuiet();
    EXPECT_EQ(order, (std::vector{1, 2, 3})) << "the captured end right after their block, in its turn";
    EXPECT_TRUE(watched.expired());
}

TEST_F(DispatchQueueTest, BlocksAreMovedNeverCopiedAndEndOnceOnHeapOrInline) {
    testkit::LifeProbe probe;
    const auto counts = probe.counts();
    queue_->async([inlined = std::move(probe)] {});
    clock_.waitUntilQuiet();
    EXPECT_EQ(counts->copies, 0);
    EXPECT_EQ(counts->alive, 0);

    testkit::LifeProbe second;
    const auto secondCounts = second.counts();
    std::array<char, 200> large{};
    large[199] = 7;
    int seen = 0;
    queue_->after(DispatchTime::now(1s), [large, &seen, onHeap = std::move(second)] { seen = large[199]; });
    clock_.advance(1s);
    EXPECT_EQ(seen, 7);
    EXPECT_EQ(secondCounts->copies, 0);
    EXPECT_EQ(secondCounts->alive, 0);
}

TEST_F(DispatchQueueTest, LabelBelongsToTheQueueAndMainToTheThread) {
    ASSERT_TRUE(isMainThread());
    EXPECT_EQ(DispatchQueue::currentLabel(), "com.apple.main-thread");
    queue_->sync([&] {
        EXPECT_EQ(DispatchQueue::currentLabel(), "test.queue");
        EXPECT_TRUE(isMainThread()) << "an idle queue's sync stays on the calling thread";
        DispatchQueue::global()->sync(
            [] { EXPECT_EQ(DispatchQueue::currentLabel(), "com.apple.root.default-qos"); });
        EXPECT_EQ(DispatchQueue::currentLabel(), "test.queue");
    });
    queue_->async([] {
        EXPECT_EQ(DispatchQueue::currentLabel(), "test.queue");
        EXPECT_FALSE(isMainThread());
        DispatchQueue::main()->sync([] {
            EXPECT_EQ(DispatchQueue::currentLabel(), "com.apple.main-thread");
            EXPECT_TRUE(isMainThread());
        });
    });
    clock_.waitUntilQuiet();
    std::jthread([] { EXPECT_EQ(DispatchQueue::currentLabel(), "com.apple.root.default-qos"); }).join();
    EXPECT_EQ(DispatchQueue::serial("")->label(), "");
}

TEST_F(DispatchQueueTest, SyncOnABusyQueueTakesItsTurnOnTheCallingThread) {
    std::vector<int> order;
    std::latch running(1);
    std::latch mayEnd(1);
    queue_->async([&] {
        running.count_down();
        mayEnd.wait();
        order.push_back(1);
    });
    running.wait();
    queue_->async([&] { order.push_back(2); });
    std::jthread releaser([&] { mayEnd.count_down(); });
    queue_->sync([&] {
        EXPECT_TRUE(isMainThread());
        order.push_back(3);
        queue_->async([&] { order.push_back(4); });
    });
    clock_.waitUntilQuiet();
    EXPECT_EQ(order, (std::vector{1, 2, 3, 4}));
}

TEST_F(DispatchQueueTest, SyncKeepsItsQueueToTheEnd) {
    const std::weak_ptr<DispatchQueue> watched = queue_;
    bool laterRan = false;
    queue_->sync([&] {
        queue_->async([&] { laterRan = true; });
        queue_.reset();
        EXPECT_FALSE(watched.expired());
    });
    clock_.waitUntilQuiet();
    EXPECT_TRUE(laterRan);
    EXPECT_TRUE(watched.expired());
}

TEST_F(DispatchQueueTest, QualitiesKeepTheirNumbers) {
    using enum DispatchQoS;
    EXPECT_EQ(queue_->qos(), userInitiated);
    for (const auto& [qos, number] : {std::pair{background, 9U},
                                      {utility, 17U},
                                      {standard, 21U},
                                      {userInitiated, 25U},
                                      {userInteractive, 33U}}) {
        EXPECT_EQ(static_cast<unsigned>(DispatchQueue::global(qos)->qos()), number);
    }
    EXPECT_EQ(DispatchQueue::global(unspecified), DispatchQueue::global(standard));
}

TEST_F(DispatchQueueTest, SixtyFourBlockedBlocksMeetAndDoNotHoldUpSerialQueues) {
    for (const bool said : {true, false}) {
        constexpr int kMembers = 64;
        std::latch allHere(kMembers);
        std::latch released(1);
        std::latch ended(kMembers);
        for (int i = 0; i < kMembers; ++i) {
            DispatchQueue::global(DispatchQoS::userInitiated)->async([&] {
                {
                    std::optional<DispatchBlockingScope> scope;
                    if (said) scope.emplace();
                    allHere.arrive_and_wait();
                    released.wait();
                }
                ended.count_down();
            });
        }
        allHere.wait();
        std::latch serialRan(1);
        std::atomic<bool> sixtyFifthRan{false};
        DispatchQueue::global()->async([&] { sixtyFifthRan = true; });
        DispatchQueue::serial("free")->async([&] { serialRan.count_down(); });
        serialRan.wait();
        EXPECT_FALSE(sixtyFifthRan) << "64 threads at most";
        released.count_down();
        ended.wait();
        clock_.waitUntilQuiet();
        EXPECT_TRUE(sixtyFifthRan);
    }
}

TEST_F(DispatchQueueTest, WorkersCanTellAStackOverflow) {
    stack_t stack{};
    std::atomic<bool> writable{false};
    queue_->async([&] {
        sigaltstack(nullptr, &stack);
        static_cast<volatile char*>(stack.ss_sp)[0] = 1;
        writable = true;
    });
    clock_.waitUntilQuiet();
    EXPECT_TRUE(writable);
    EXPECT_EQ(stack.ss_flags & SS_DISABLE, 0);
    EXPECT_GE(stack.ss_size, 64U * 1024U);
}

struct UnwindWitness {
    ~UnwindWitness() { unwound = true; }
    static inline std::atomic<bool> unwound{false};
};

[[noreturn]] void reportIntactStack() {
    const char* text = UnwindWitness::unwound ? "stack unwound" : "stack intact";
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text, strlen(text));
    _exit(3);
}

TEST(DispatchQueueDeathTest, ExceptionLeavingABlockEndsTheProcessInsideTheThrow) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto dieOn = [](const std::shared_ptr<DispatchQueue>& queue) {
        std::set_terminate(reportIntactStack);
        queue->async([] {
            const UnwindWitness witness;
            throw std::runtime_error("left the block");
        });
        std::latch(1).wait();
    };
    EXPECT_EXIT(dieOn(DispatchQueue::serial("dies")), testing::ExitedWithCode(3), "stack intact");
    EXPECT_EXIT(dieOn(DispatchQueue::global()), testing::ExitedWithCode(3), "stack intact");

    const auto dieUnderAHandler = [] {
        std::set_terminate([] { _exit(4); });
        DispatchQueue::main()->async([] { throw std::runtime_error("left the block"); });
        try {
            RunLoop::main().drain();
        } catch (...) {
            _exit(5);
        }
    };
    EXPECT_EXIT(dieUnderAHandler(), testing::ExitedWithCode(4), "");
}

}  // namespace
}  // namespace zqcore
