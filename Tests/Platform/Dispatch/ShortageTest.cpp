#include "Platform/Dispatch/Linux/Shortage.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <vector>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/RunLoop.h"
#include "TestKit/Sanitized.h"

namespace zqcore::platform {
namespace {

using namespace std::chrono_literals;
using testkit::kSanitized;

/// Leaves the process a little memory, but not as much as a thread's stack.
class NoThreads {
  public:
    NoThreads() {
        std::size_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        getrlimit(RLIMIT_AS, &before_);
        rlimit limit = before_;
        limit.rlim_cur = pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + (4U << 20U);
        setrlimit(RLIMIT_AS, &limit);
    }
    ~NoThreads() { setrlimit(RLIMIT_AS, &before_); }

  private:
    rlimit before_{};
};

class NoDescriptors {
  public:
    NoDescriptors() {
        rlimit limit{};
        getrlimit(RLIMIT_NOFILE, &limit);
        limit.rlim_cur = 64;
        setrlimit(RLIMIT_NOFILE, &limit);
        for (int file = 0; (file = open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0;) files_.push_back(file);
    }
    ~NoDescriptors() {
        for (const int file : files_) close(file);
    }

  private:
    std::vector<int> files_;
};

/// Each in a fresh process, whose queues haven't been used yet.
class ShortageDeathTest : public testing::Test {
  protected:
    ShortageDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
    template <class Shortfall>
    [[noreturn]] static void useQueuesInNeed() {
        std::atomic<bool> serial{false};
        std::atomic<bool> delayed{false};
        const auto queue = DispatchQueue::serial("test.shortage");
        {
            const Shortfall shortfall;
            (void)RunLoop::main();
            queue->async([&] { serial = true; });
            DispatchQueue::main()->after(DispatchTime::now(1ms), [&] { delayed = true; });
        }
        // No other block is submitted.
        _exit(RunLoop::main().runUntil([&] { return serial && delayed; }, 20s) ? 0 : 1);
    }
};

TEST_F(ShortageDeathTest, WorkWaitsForThreadsAndGetsThem) {
    if (kSanitized) GTEST_SKIP() << "threads get their memory otherwise there";
    EXPECT_EXIT(useQueuesInNeed<NoThreads>(), testing::ExitedWithCode(0), "");
}

TEST_F(ShortageDeathTest, LoopAndDeadlinesWaitForDescriptorsAndGetThem) {
    if (kSanitized) GTEST_SKIP() << "its own checks need a descriptor there";
    EXPECT_EXIT(useQueuesInNeed<NoDescriptors>(), testing::ExitedWithCode(0), "");
}

TEST_F(ShortageDeathTest, TheNextBlockOnTheSameQueueGetsTheThreadThatTheFirstDidNot) {
    if (kSanitized) GTEST_SKIP() << "threads get their memory otherwise there";
    const auto twice = [] {
        std::atomic<int> ran{0};
        const auto queue = DispatchQueue::serial("test.shortage");
        {
            const NoThreads shortfall;
            queue->async([&] { ++ran; });
        }
        queue->async([&] { ++ran; });
        for (int i = 0; i < 20'000 && ran < 2; ++i) poll(nullptr, 0, 1);
        _exit(ran == 2 ? 0 : 1);
    };
    EXPECT_EXIT(twice(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace zqcore::platform
