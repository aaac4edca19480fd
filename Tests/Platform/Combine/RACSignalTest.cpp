#include "Platform/Combine/RACSignal.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "Platform/Combine/WillDeallocSignal.h"
#include "TestKit/ManualClock.h"

namespace zqcore::platform {
namespace {

class Thing final : public NSObject {
  public:
    explicit Thing(std::vector<std::string>* log = nullptr) : log_(log) {}
    ~Thing() override {
        if (log_) log_->push_back("destructor");
    }

  private:
    std::vector<std::string>* log_;
};

TEST(RACDisposableTest, ActsOnceAndOnlyWhenTold) {
    int disposed = 0;
    const auto count = [&] { ++disposed; };
    RACDisposable::make(count).reset();
    EXPECT_EQ(disposed, 0) << "dropping one does nothing";

    const auto disposable = RACDisposable::make(count);
    const auto inner = RACDisposable::make(count);
    disposable->add(inner);
    EXPECT_TRUE(disposable->dispose());
    EXPECT_EQ(disposed, 2);
    EXPECT_TRUE(inner->isDisposed());
    EXPECT_FALSE(disposable->dispose());
    disposable->add(count);
    EXPECT_EQ(disposed, 3) << "what comes late is done at once";
}

TEST(WillDeallocSignalTest, CompletesWithoutAValueBeforeTheTeardown) {
    std::vector<std::string> log;
    auto thing = makeObject<Thing>(&log);
    const std::weak_ptr<Thing> weak = thing;
    const auto signal = rac_willDeallocSignal(thing);
    signal.subscribe([&](const RACUnit&) { log.push_back("value"); },
                     [&] { log.push_back(weak.expired() ? "gone" : "reachable"); });
    rac_willDeallocSignal(thing).subscribeCompleted([&] { log.push_back("second"); });
    const auto ended = signal.subscribeCompleted([&] { log.push_back("disposed"); });
    ended->dispose();

    EXPECT_TRUE(log.empty());
    thing.reset();
    EXPECT_EQ(log, (std::vector<std::string>{"gone", "second", "destructor"}));
    signal.subscribeCompleted([&] { log.push_back("late"); });
    EXPECT_EQ(log.back(), "late");
    rac_willDeallocSignal(nullptr).subscribeCompleted([&] { log.push_back("none"); });
    EXPECT_EQ(log.back(), "none");
}

TEST(WillDeallocSignalTest, DisposedSubscriptionsLeaveNothingOnTheObject) {
    const auto thing = makeObject<Thing>();
    const auto held = std::make_shared<int>();
    for (int round = 0; round < 3; ++round)
        rac_willDeallocSignal(thing).subscribeCompleted([held] {})->dispose();
    EXPECT_EQ(held.use_count(), 1);
}

TEST(WillDeallocSignalTest, CompletesForTheObjectOfASubscriptionToo) {
    int completed = 0;
    AnyCancellable subscription([] {});
    rac_willDeallocSignal(subscription.object()).subscribeCompleted([&] { ++completed; });
    subscription.cancel();
    EXPECT_EQ(completed, 0) << "cancelled, but still there";
    subscription = {};
    EXPECT_EQ(completed, 1);
}

TEST(RACSignalTest, TheEndOfTheSourceEndsWhatItsSubscribersHold) {
    const auto held = std::make_shared<int>();
    auto source = std::make_shared<CurrentValueSubject<int>>(1);
    RACSignal<int>::valuesOf(source).distinctUntilChanged().subscribeNext([held](const int&) {});
    EXPECT_GT(held.use_count(), 1) << "what `subscribeNext` gave was dropped, the subscription goes on";
    source.reset();
    EXPECT_EQ(held.use_count(), 1);
}

TEST(RACSignalTest, TakeUntilEndsOnTheTriggersValueOrCompletion) {
    const auto source = std::make_shared<CurrentValueSubject<int>>(1);
    const auto stop = std::make_shared<CurrentValueSubject<int>>(0);
    auto thing = makeObject<Thing>();
    std::vector<int> seen;
    int completed = 0;
    const auto values = RACSignal<int>::valuesOf(source);
    const auto take = [&](const int& value) { seen.push_back(value); };
    const auto end = [&] { ++completed; };

    values.takeUntil(rac_willDeallocSignal(thing)).subscribe(take, end);
    source->send(2);
    EXPECT_EQ(seen, (std::vector{1, 2}));
    thing.reset();
    source->send(3);
    EXPECT_EQ(seen, (std::vector{1, 2}));
    EXPECT_EQ(completed, 1);

    // This trigger has a value already, and is subscribed first.
    values.takeUntil(RACSignal<int>::valuesOf(stop)).subscribe(take, end);
    EXPECT_EQ(seen, (std::vector{1, 2}));
    EXPECT_EQ(completed, 2);
    EXPECT_EQ(source.use_count(), 2) << "here and in `values`: ended subscriptions keep nothing";
}

TEST(RACSignalTest, DistinctUntilChangedPassesTheFirstAndEachChange) {
    const auto source = std::make_shared<CurrentValueSubject<bool>>(false);
    std::vector<bool> seen;
    const auto subscription = RACSignal<bool>::valuesOf(source).distinctUntilChanged().subscribeNext(
        [&](const bool& value) { seen.push_back(value); });
    for (const bool value : {false, true, true, false}) source->send(value);
    EXPECT_EQ(seen, (std::vector{false, true, false}));
    subscription->dispose();
    source->send(true);
    EXPECT_EQ(seen.size(), 3U);
}

TEST(RACSignalTest, DeliversOnTheMainThreadStraightOrInOrder) {
    testkit::ManualClock clock;
    const auto source = std::make_shared<CurrentValueSubject<int>>(0);
    std::vector<int> seen;
    const auto subscription =
        RACSignal<int>::valuesOf(source).deliverOnMainThread().subscribeNext([&](const int& value) {
            EXPECT_TRUE(isMainThread());
            seen.push_back(value);
            if (value == 1) source->send(2);
        });
    EXPECT_EQ(seen, (std::vector{0})) << "the first value comes inside the call";
    std::thread([&] { source->send(1); }).join();
    EXPECT_EQ(seen.size(), 1U);
    source->send(7);
    EXPECT_EQ(seen.size(), 1U) << "straight through it would overtake what is on its way";
    clock.waitUntilQuiet();
    EXPECT_EQ(seen, (std::vector{0, 1, 7, 2}));
    source->send(8);
    EXPECT_EQ(seen.back(), 8);
    subscription->dispose();
}

}  // namespace
}  // namespace zqcore::platform
