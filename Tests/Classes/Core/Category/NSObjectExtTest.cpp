#include "Classes/Core/Category/NSObjectExt.h"

#include <gtest/gtest.h>

#include "Classes/Core/Category/NSObjectZQ.h"

namespace zqcore {
namespace {

class NSObjectExtTest : public testing::Test {
  protected:
    class Panel final : public NSObject {};

    std::shared_ptr<NSObject> owner = makeObject<Panel>();
    std::shared_ptr<NSObject> other = makeObject<NSObject>();
};

TEST_F(NSObjectExtTest, ObjectSlotsKeepOrDontAsTheirNamesSay) {
    EXPECT_EQ(zq_extStrongObj(*owner), nullptr);
    EXPECT_EQ(zq_extWeakObj(*owner), nullptr);
    EXPECT_EQ(zq_extCopyObj(*owner), std::nullopt);
    const std::weak_ptr<NSObject> weak = other;
    setZq_extStrongObj(*owner, other);
    setZq_extWeakObj(*owner, other);
    other.reset();
    EXPECT_FALSE(weak.expired());
    EXPECT_EQ(zq_extWeakObj(*owner), zq_extStrongObj(*owner));
    setZq_extStrongObj(*owner, nullptr);
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(zq_extWeakObj(*owner), nullptr);

    Value::Array original{1};
    setZq_extCopyObj(*owner, original);
    original.emplace_back(2);
    EXPECT_EQ(zq_extCopyObj(*owner), Value(Value::Array{1}));
}

TEST_F(NSObjectExtTest, ContainersAreMadeOnceAndShared) {
    zq_extArray(*owner)->emplace_back("first");
    EXPECT_EQ(zq_extArray(*owner)->size(), 1U);
    EXPECT_TRUE(zq_extArray(*other)->empty());
    zq_extDictionary(*owner)->set("key", 1);
    EXPECT_EQ(zq_extDictionary(*owner)->size(), 1U);
    setZq_extDictionary(*owner, nullptr);
    EXPECT_TRUE(zq_extDictionary(*owner)->empty()) << "emptied, it is made anew";
}

TEST_F(NSObjectExtTest, WeakTablesForgetTheDead) {
    const auto second = makeObject<NSObject>();
    const auto hash = zq_extHash(*owner);
    hash->addObject(other);
    hash->addObject(second);
    hash->addObject(second);
    const auto map = zq_extMap(*owner);
    map->setObject(other, 1);
    map->setObject(second, "two");
    EXPECT_EQ(map->objectForKey(1.0), other) << "keys are equal by value";
    EXPECT_EQ(hash->count(), 2U);
    other.reset();
    EXPECT_EQ(zq_extHash(*owner)->allObjects(), std::vector{second});
    EXPECT_EQ(hash->count(), 1U);
    EXPECT_TRUE(hash->containsObject(second));
    EXPECT_EQ(zq_extMap(*owner)->objectForKey(1), nullptr);
    EXPECT_EQ(map->count(), 1U);
    map->setObject(nullptr, "two");
    hash->removeObject(second);
    EXPECT_EQ(map->count() + hash->count(), 0U);
}

TEST_F(NSObjectExtTest, AnObjectTellsItsClassAndAddress) {
    EXPECT_EQ(zq_toClass<Panel>(owner), owner);
    EXPECT_EQ(zq_toClass<NSObject>(owner), owner);
    EXPECT_EQ(zq_toClass<Panel>(other), nullptr);
    EXPECT_TRUE(owner->description().ends_with(": " + zq_address(*owner) + ">"));
}

}  // namespace
}  // namespace zqcore
