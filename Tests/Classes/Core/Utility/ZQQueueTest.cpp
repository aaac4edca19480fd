#include "Classes/Core/Utility/ZQQueue.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "Classes/Core/Utility/DispatchQueueExtension.h"
#include "TestKit/ManualClock.h"

namespace zqcore {
namespace {

TEST(ZQQueueTest, GlobalSerialQueueIsOneAndItsLabelIsTold) {
    EXPECT_EQ(ZQQueue::globalSerialQueue()->label(), "com.tessara.ZQQueue.globalSerialQueue");
    EXPECT_EQ(ZQQueue::globalSerialQueue()->qos(), DispatchQoS::unspecified);
    EXPECT_EQ(ZQQueue::globalSerialQueue(), ZQQueue::globalSerialQueue());
}

TEST(ZQQueueTest, ExecuteInMainQueueGoesByTheLabelAndSafeMainByTheThread) {
    testkit::ManualClock clock;
    std::vector<std::string> order;
    const auto note = [&order](const char* what) { return [&order, what] { order.emplace_back(what); }; };
    const auto queue = DispatchQueue::serial("other");

    ZQExecuteInMainQueue(note("main"));
    DispatchQueueExtension::safeMain(note("main, safe"));
    EXPECT_EQ(order, (std::vector<std::string>{"main", "main, safe"})) << "before the calls returned";

    order.clear();
    queue->sync([&] {
        ASSERT_TRUE(isMainThread());
        ZQExecuteInMainQueue(note("hopped"));
        DispatchQueueExtension::safeMain(note("at once"));
    });
    clock.waitUntilQuiet();
    EXPECT_EQ(order, (std::vector<std::string>{"at once", "hopped"}));

    order.clear();
    queue->async([&] {
        ZQExecuteInMainQueue(note("2"));
        DispatchQueueExtension::safeMain(note("3"));
        DispatchQueue::main()->sync([&] {
            ZQExecuteInMainQueue(note("4"));
            order.emplace_back("5");
        });
    });
    clock.waitUntilQuiet();
    EXPECT_EQ(order, (std::vector<std::string>{"2", "3", "4", "5"}));
}

// Tokens are seen for the rest of the process, so each run of a test takes new ones.
std::string newToken() {
    static int made = 0;
    return "ZQQueueTest." + std::to_string(++made);
}

TEST(ZQQueueTest, OnceRunsOncePerTokenAlsoNestedAndFromOtherThreads) {
    const std::string token = newToken();
    const std::string innerToken = newToken();
    int runs = 0;
    const auto again = [&] { DispatchQueueExtension::once(token, [&] { ++runs; }); };
    std::jthread([&] {
        DispatchQueueExtension::once(token, [&] {
            ++runs;
            again();
            DispatchQueueExtension::once(innerToken, [&] { ++runs; });
        });
    }).join();
    again();
    EXPECT_EQ(runs, 2);
}

TEST(ZQQueueTest, OnceTellsPlacesInTheSourceApart) {
    static int timesHere = 0;
    const bool first = timesHere++ == 0;
    int runs = 0;
    for (int i = 0; i < 3; ++i) {
        DispatchQueueExtension::once([&] { ++runs; });
        DispatchQueueExtension::once([&] { runs += 10; });
        DispatchQueueExtension::once(nullptr);
    }
    EXPECT_EQ(runs, first ? 11 : 0) << "a place is the same place when the test is run again";
}

}  // namespace
}  // namespace zqcore
