#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "Classes/Core/Utility/AnyCancellableExtension.h"
#include "Classes/Core/Utility/LifetimeAssociation.h"
#include "Classes/Core/Utility/ObjectAssociation.h"
#include "Classes/Core/Utility/Then.h"
#include "Classes/Core/Utility/ZQTargetBindable.h"
#include "Platform/Combine/Subject.h"
#include "TestKit/LifeProbe.h"

namespace zqcore {
namespace {

class Object final : public NSObject {
  public:
    std::string name;
};

TEST(ObjectAssociationTest, IsATypedSlotOfEachObjectThatEndsWithIt) {
    const ObjectAssociation<std::string> name;
    const ObjectAssociation<std::shared_ptr<Object>> companion;
    auto owner = makeObject<Object>();
    const auto other = makeObject<Object>();
    EXPECT_EQ(name[*owner], std::nullopt);
    name.set(*owner, "left");
    companion.set(*owner, other);
    EXPECT_EQ(name[*owner], "left");
    EXPECT_EQ(companion[*owner], other);
    EXPECT_EQ(name[*other], std::nullopt) << "each object has a slot of its own";
    name.set(*owner, std::nullopt);
    EXPECT_EQ(name[*owner], std::nullopt);
    EXPECT_EQ(other.use_count(), 2);
    owner.reset();
    EXPECT_EQ(other.use_count(), 1);
}

TEST(LifetimeAssociationTest, OwnerKeepsTheObjectAndTheHandlerRunsBeforeItGoes) {
    auto owner = makeObject<Object>();
    const std::weak_ptr<Object> weakOwner = owner;
    std::weak_ptr<Object> weakObject;
    std::vector<std::string> events;
    const auto tie = [&](std::string name) {
        auto object = makeObject<Object>();
        weakObject = object;
        return LifetimeAssociation::make(object, owner, [&, name, weak = std::weak_ptr<Object>(object)] {
            EXPECT_FALSE(weak.expired()) << "the handler comes first";
            events.push_back(name + (weakOwner.expired() ? " without owner" : " with owner"));
        });
    };
    auto first = tie("first");
    auto second = tie("second");
    EXPECT_EQ(LifetimeAssociation::objectsTiedTo(*owner).size(), 2u);
    EXPECT_FALSE(weakObject.expired()) << "kept by the owner alone";

    first.reset();
    EXPECT_EQ(events, std::vector<std::string>{"first with owner"});
    EXPECT_EQ(LifetimeAssociation::objectsTiedTo(*owner).size(), 1u);

    owner.reset();
    EXPECT_EQ(events.back(), "second without owner");
    EXPECT_TRUE(weakObject.expired());
    second.reset();
    EXPECT_EQ(events.size(), 2u) << "a tie ends once";

    const auto orphan =
        LifetimeAssociation::make(makeObject<Object>(), nullptr, [&] { events.push_back(""); });
    EXPECT_EQ(events.size(), 3u) << "without an owner at once";
}

class SubscriptionTieTest : public testing::Test {
  protected:
    AnyCancellable subscribe(int id) {
        return AnyCancellable([this, id] { cancelled.push_back(id); });
    }

    std::vector<int> cancelled;
    std::shared_ptr<Object> owner = makeObject<Object>();
};

TEST_F(SubscriptionTieTest, OwnerKeepsASubscriptionAndCancelsItWhenItDies) {
    PassthroughSubject<int> subject;
    int seen = 0;
    tieToLifetime(subject.sink([&](int value) { seen = value; }), owner);
    subject.send(1);
    EXPECT_EQ(seen, 1) << "nobody else keeps it";

    const AnyCancellable kept = tieToLifetime(subscribe(7), owner);
    owner.reset();
    subject.send(2);
    EXPECT_EQ(seen, 1);
    EXPECT_EQ(cancelled, std::vector<int>{7}) << "also while someone keeps it";
}

TEST_F(SubscriptionTieTest, MovesToASecondOwnerWithoutCancelling) {
    auto second = makeObject<Object>();
    const AnyCancellable one = subscribe(1);
    EXPECT_EQ(tieToLifetime(one, owner), one) << "the same one is given back";
    tieToLifetime(one, second);
    EXPECT_TRUE(subscriptionsTieToLifetime(*owner).empty());
    EXPECT_EQ(subscriptionsTieToLifetime(*second), std::vector{one});
    owner.reset();
    EXPECT_TRUE(cancelled.empty());
    second.reset();
    EXPECT_EQ(cancelled, std::vector<int>{1});
}

TEST_F(SubscriptionTieTest, RemovedTieLeavesItRunning) {
    const AnyCancellable one = tieToLifetime(subscribe(1), owner);
    removeLifetimeTie(one);
    removeLifetimeTie(one);
    owner.reset();
    EXPECT_TRUE(cancelled.empty());
    tieToLifetime(one, nullptr);
    EXPECT_EQ(cancelled, std::vector<int>{1}) << "tied to no owner";
}

TEST_F(SubscriptionTieTest, AllOfAnOwnerAreListedAndCancelledInOrder) {
    const auto other = LifetimeAssociation::make(makeObject<Object>(), owner, [] {});
    for (const int id : {3, 1, 2}) tieToLifetime(subscribe(id), owner);
    tieToLifetime(AnyCancellable(), owner);
    EXPECT_EQ(subscriptionsTieToLifetime(*owner).size(), 3u) << "other objects and empty ones are no members";
    cancelSubscriptionsTieToLifetime(*owner);
    EXPECT_EQ(cancelled, (std::vector{3, 1, 2}));
    EXPECT_TRUE(subscriptionsTieToLifetime(*owner).empty());
    EXPECT_EQ(LifetimeAssociation::objectsTiedTo(*owner).size(), 1u);
}

TEST(ThenTest, ConfiguresTheObjectAndGivesItBack) {
    const auto object = makeObject<Object>();
    EXPECT_EQ(then(object, [](Object& it) { it.name = "left"; }), object);
    EXPECT_EQ(object->name, "left");
    EXPECT_THROW(then(object, [](Object&) { throw std::runtime_error("no"); }), std::runtime_error);
}

/// As controls are: it performs its action on a target that it doesn't keep.
class Control final : public NSObject {
  public:
    void setTarget(const std::shared_ptr<NSObject>& target) { target_ = target; }
    void setAction(std::optional<Selector> action) { action_ = action; }
    [[nodiscard]] bool bound() const { return !target_.expired() || action_; }
    [[nodiscard]] std::optional<Selector> action() const { return action_; }
    void click() {
        const auto target = target_.lock();
        if (target && action_) action_->perform(*target, this);
    }

  private:
    std::weak_ptr<NSObject> target_;
    std::optional<Selector> action_;
};

TEST(ZQTargetBindableTest, BindsAFunctionThatTheControlKeepsUntilItIsReplacedOrCleared) {
    auto control = makeObject<Control>();
    const std::weak_ptr<Control> weak = control;
    std::vector<std::string> calls;
    zq_bindAction(control, nullptr);
    EXPECT_FALSE(control->bound());
    zq_bindAction(control, [&](Control& it) {
        EXPECT_EQ(&it, weak.lock().get());
        calls.emplace_back("first");
        zq_bindAction(weak.lock(), [&](Control&) { calls.emplace_back("second"); });
        calls.emplace_back("still first");
    });
    EXPECT_EQ(control->action()->name(), "performAction");
    control->click();
    control->click();
    EXPECT_EQ(calls, (std::vector<std::string>{"first", "still first", "second"}))
        << "one function at a time, replaced also by itself";
    zq_bindAction(control, nullptr);
    EXPECT_FALSE(control->bound());
    control->click();
    EXPECT_EQ(calls.size(), 3u);

    testkit::LifeProbe probe;
    const auto counts = probe.counts();
    zq_bindAction(control, [probe = std::move(probe)](Control&) {});
    EXPECT_GT(counts->alive, 0);
    control.reset();
    EXPECT_TRUE(weak.expired()) << "the function doesn't keep its control";
    EXPECT_EQ(counts->alive, 0) << "and ends with it";
}

TEST(SelectorTest, IsIdentityAndPerformsOnItsOwnClassOnly) {
    static int calls = 0;
    struct Panel final : NSObject {
        void reload() { ++calls; }
        void close(NSObject* sender) { calls += sender ? 10 : 100; }
    };
    constexpr auto kReload = Selector::of<&Panel::reload>("reload");
    constexpr auto kClose = Selector::of<&Panel::close>("close:");
    EXPECT_EQ(kReload, Selector::of<&Panel::reload>("reload"));
    EXPECT_NE(kReload, kClose);
    Panel panel;
    Object other;
    kReload.perform(panel, nullptr);
    kClose.perform(panel, &other);
    kClose.perform(panel, nullptr);
    kReload.perform(other, nullptr);
    EXPECT_EQ(calls, 111);
}

}  // namespace
}  // namespace zqcore
