#include "Platform/Combine/Subject.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>
#include <utility>
#include <vector>

#include "Classes/Core/Utility/PublisherExtension.h"
#include "TestKit/LifeProbe.h"
#include "TestKit/ManualClock.h"

namespace zqcore {
namespace {

using Values = std::vector<int>;

TEST(SubjectTest, CurrentValueIsSetBeforeDeliveryAndReplayed) {
    const auto subject = std::make_shared<CurrentValueSubject<int>>(1);
    Values first;
    Values second;
    const AnyCancellable a = subject->sink([&](int value) {
        EXPECT_EQ(subject->value(), value);
        first.push_back(value);
    });
    subject->send(2);
    AnyCancellable b = AnyPublisher<int>(subject).map([](int v) { return v * 10; }).sink([&](int value) {
        second.push_back(value);
    });
    subject->send(2);
    b.cancel();
    b.cancel();
    subject->setValue(3);
    EXPECT_EQ(first, (Values{1, 2, 2, 3})) << "equal values are delivered too";
    EXPECT_EQ(second, (Values{20, 20}));
}

TEST(SubjectTest, SubscribersMaySendCancelAndSubscribeWhileTheyReceive) {
    CurrentValueSubject<int> subject(0);
    Values late;
    std::vector<AnyCancellable> kept;
    AnyCancellable self;
    self = subject.sink([&](int value) {
        if (value == 1) {
            kept.push_back(subject.sink([&](int v) { late.push_back(v); }));
            subject.send(2);
            self.cancel();
        }
    });
    Values after;
    kept.push_back(subject.sink([&](int value) { after.push_back(value); }));
    subject.send(1);
    EXPECT_EQ(late, (Values{1, 2}));
    EXPECT_EQ(after, (Values{0, 2})) << "never back to an older value";
    subject.send(3);
    EXPECT_EQ(after.back(), 3);
}

TEST(SubjectTest, AnEarlierValueMayComeBackToItsSubjectAsItEnds) {
    struct Model {
        CurrentValueSubject<std::shared_ptr<Model>>& subject;
        AnyCancellable subscription;
        ~Model() {
            subscription.cancel();
            EXPECT_EQ(subject.value(), nullptr);
        }
    };
    CurrentValueSubject<std::shared_ptr<Model>> subject(nullptr);
    auto model = std::make_shared<Model>(subject, subject.sink([](const auto&) {}));
    const std::weak_ptr<Model> watched = model;
    subject.send(std::exchange(model, nullptr));
    EXPECT_FALSE(watched.expired());
    subject.send(nullptr);
    EXPECT_TRUE(watched.expired());
}

TEST(SubjectTest, EverySubscriberEndsWithTheValueThatTheSubjectHolds) {
    CurrentValueSubject<int> subject(-1);
    int last = -1;
    const AnyCancellable subscription = subject.sink([&](int value) { last = value; });
    {
        std::vector<std::jthread> senders;
        for (int s = 0; s < 4; ++s) {
            senders.emplace_back([&, s] {
                for (int i = 0; i < 5000; ++i) subject.send(s * 10'000 + i);
            });
        }
    }
    EXPECT_EQ(last, subject.value());
}

TEST(SubjectTest, CancellableIsAValueThatEndsWithItsPlace) {
    PassthroughSubject<int> subject;
    Values seen;
    testkit::LifeProbe probe;
    const auto counts = probe.counts();
    {
        std::set<AnyCancellable> kept;
        kept.insert(subject.sink([&seen, probe = std::move(probe)](int value) { seen.push_back(value); }));
        kept.insert(subject.sink([&seen](int value) { seen.push_back(-value); }));
        subject.send(1);
    }
    subject.send(2);
    EXPECT_EQ(seen, (Values{1, -1}));
    EXPECT_EQ(counts->alive, 0);

    int ends = 0;
    AnyCancellable a([&] { ++ends; });
    AnyCancellable b = std::move(a);
    a.cancel();
    EXPECT_EQ(ends, 0);
    b = AnyCancellable();
    EXPECT_EQ(ends, 1) << "what is replaced ends";
}

TEST(SubjectTest, ReceiveOnMainQueueAlwaysHopsAndKeepsOrder) {
    testkit::ManualClock clock;
    const auto subject = std::make_shared<CurrentValueSubject<int>>(1);
    Values seen;
    AnyCancellable subscription = receiveOnMainQueue(AnyPublisher<int>(subject)).sink([&](int value) {
        EXPECT_EQ(DispatchQueue::currentLabel(), DispatchQueue::main()->label());
        seen.push_back(value);
    });
    subject->send(2);
    EXPECT_TRUE(seen.empty()) << "also from the main thread itself";
    DispatchQueue::serial("sender")->async([&] { subject->send(3); });
    clock.waitUntilQuiet();
    EXPECT_EQ(seen, (Values{1, 2, 3}));
    subject->send(4);
    subscription.cancel();
    clock.waitUntilQuiet();
    EXPECT_EQ(seen, (Values{1, 2, 3})) << "cancelled on the main queue, none follows";
}

}  // namespace
}  // namespace zqcore
