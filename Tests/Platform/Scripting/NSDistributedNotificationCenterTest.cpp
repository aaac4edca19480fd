#include "Platform/Scripting/NSDistributedNotificationCenter.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "TestKit/LifeProbe.h"
#include "TestKit/PrivateBus.h"

namespace zqcore::platform {
namespace {

using testkit::ChildProcess;
using testkit::LifeProbe;
using testkit::NoBus;
using testkit::PrivateBus;

constexpr const char* kName = "com.example.news";
const std::string kPlainPeer = std::string(ZQ_TEST_PROGRAMS) + "/PlainPeer";

/// Keeps what it heard, and lets a test wait for it.
class Hearing final {
  public:
    void hear(const NSDistributedNotification& notification) {
        const std::lock_guard lock(mutex_);
        heard_.push_back(notification);
        changed_.notify_all();
    }
    [[nodiscard]] std::vector<NSDistributedNotification> waitFor(std::size_t count) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return heard_.size() >= count; });
        return heard_;
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<NSDistributedNotification> heard_;
};

class NSDistributedNotificationCenterTest : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(bus.running()); }

    std::shared_ptr<void> observe(const std::string& name = kName) {
        return center.addObserver(name, queue, [this](const auto& notification) {
            EXPECT_EQ(DispatchQueue::currentLabel(), "news");
            hearing.hear(notification);
        });
    }
    bool post(Value object, std::optional<ValueDictionary> userInfo, const std::string& name = kName) {
        return center.postNotificationName(name, std::move(object), std::move(userInfo));
    }

    PrivateBus bus;
    NSDistributedNotificationCenter& center = NSDistributedNotificationCenter::defaultCenter();
    std::shared_ptr<DispatchQueue> queue = DispatchQueue::serial("news");
    Hearing hearing;
};

TEST_F(NSDistributedNotificationCenterTest, EveryPropertyListValueSurvivesTheWay) {
    const ValueDictionary all{{"true", true},
                              {"integer", -7},
                              {"large", ~std::uint64_t{0}},
                              {"real", 1.5},
                              {"text", "你好 🌍"},
                              {"empty", ""},
                              {"data", Data(std::string("a\0b", 3))},
                              {"no data", Data()},
                              {"date", Date(std::chrono::nanoseconds(1'700'000'000'123'456'789))},
                              {"array", Value::Array{1, "two", Value::Array{}}},
                              {"dictionary", ValueDictionary{{"deep", ValueDictionary{{"deeper", 3}}}}}};
    const auto observation = observe();
    ASSERT_TRUE(post("a.b", all)) << "and one's own posts come back";
    ASSERT_TRUE(post(nullptr, std::nullopt));
    const auto heard = hearing.waitFor(2);
    EXPECT_EQ(heard[0].name, kName);
    EXPECT_EQ(heard[0].object, Value("a.b"));
    EXPECT_EQ(Value(*heard[0].userInfo), Value(all)) << Value(*heard[0].userInfo).description();
    EXPECT_TRUE(heard[1].object.isNull());
}

TEST_F(NSDistributedNotificationCenterTest, OtherProcessesAreHeardInOrderAndOtherNamesAreNot) {
    const auto observation = observe();
    for (int i = 0; i < 3; ++i) {
        ChildProcess other({kPlainPeer, "post", i == 1 ? "com.example.other" : kName, i == 0 ? "" : "c.d",
                            "{\"n\":" + std::to_string(i) + "}"});
        ASSERT_EQ(other.wait(), 0);
    }
    const auto heard = hearing.waitFor(2);
    EXPECT_TRUE(heard[0].object.isNull());
    EXPECT_EQ(*heard[0].userInfo->find("request"), Value("{\"n\":0}"));
    EXPECT_EQ(heard[1].object, Value("c.d"));
    EXPECT_EQ(*heard[1].userInfo->find("request"), Value("{\"n\":2}"));
}

TEST_F(NSDistributedNotificationCenterTest, OrderOfOneSenderIsKept) {
    const auto observation = observe();
    for (int i = 0; i < 500; ++i) ASSERT_TRUE(post(std::to_string(i), std::nullopt));
    const auto heard = hearing.waitFor(500);
    for (int i = 0; i < 500; ++i)
        EXPECT_EQ(heard[static_cast<std::size_t>(i)].object, Value(std::to_string(i)));
}

TEST_F(NSDistributedNotificationCenterTest, WhatNoMessageCanHoldIsNotPosted) {
    ValueDictionary deep;
    for (int i = 0; i < 100; ++i) deep = ValueDictionary{{"deeper", std::move(deep)}};
    EXPECT_FALSE(post(nullptr, ValueDictionary{{"null", nullptr}}));
    EXPECT_FALSE(post(std::string("a\0b", 3), std::nullopt));
    EXPECT_FALSE(post("a.b", ValueDictionary{{"\xff", 1}}));
    EXPECT_FALSE(post("a.b", std::move(deep)));
    EXPECT_FALSE(post("a.b", std::nullopt, "\xff"));
    EXPECT_FALSE(post("a.b", ValueDictionary{{"too large", Data(std::string(64 << 20, 'a'))}}));
    EXPECT_FALSE(center.addObserver("it's", queue, nullptr)) << "a quote can't be matched";
    const auto observation = observe();
    EXPECT_TRUE(post("still alive", std::nullopt));
    EXPECT_EQ(hearing.waitFor(1)[0].object, Value("still alive"));
}

TEST_F(NSDistributedNotificationCenterTest, ObservationEndsWithItsLastReference) {
    LifeProbe probe;
    const auto counts = probe.counts();
    auto observation = center.addObserver(kName, queue, [probe = std::move(probe)](const auto&) {
        ADD_FAILURE() << "nobody observes any more";
    });
    const auto other = observe();
    observation.reset();
    EXPECT_EQ(counts->alive, 0);
    ASSERT_TRUE(post("a.b", std::nullopt));
    EXPECT_EQ(hearing.waitFor(1).size(), 1U) << "and the other one goes on";
}

TEST_F(NSDistributedNotificationCenterTest, ObservationOutlivesTheBus) {
    const auto observation = observe();
    ASSERT_TRUE(post("before", std::nullopt));
    EXPECT_EQ(hearing.waitFor(1).size(), 1U);
    bus.stop();
    while (post("lost", std::nullopt)) {
        // The end of the bus takes a moment to be seen.
    }
    bus.start();
    ASSERT_TRUE(post("after", std::nullopt)) << "the next use connects again";
    EXPECT_EQ(hearing.waitFor(2)[1].object, Value("after"));
}

TEST_F(NSDistributedNotificationCenterTest, ObservationMadeWithoutABusIsTakenUpLater) {
    std::shared_ptr<void> observation;
    {
        const NoBus none;
        observation = observe();
        ASSERT_TRUE(observation);
        EXPECT_FALSE(post("nobody", std::nullopt));
    }
    ASSERT_TRUE(post("somebody", std::nullopt));
    EXPECT_EQ(hearing.waitFor(1)[0].object, Value("somebody"));
}

}  // namespace
}  // namespace zqcore::platform
