#include "Platform/Base/Value.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace zqcore {
namespace {

TEST(ValueTest, KeepsBooleansIntegersAndRealsApart) {
    EXPECT_FALSE(Value(true) == Value(1));
    EXPECT_FALSE(Value(1) == Value(1.0));
    EXPECT_EQ(Value(std::uint64_t{7}), Value(7)) << "one form for each integer";
    EXPECT_FALSE(Value(true).asInt64());
    EXPECT_FALSE(Value(1.0).asInt64());
    EXPECT_TRUE(Value(true).isNumber());
    EXPECT_FALSE(Value("1").isNumber());
}

TEST(ValueTest, IntegersAreExactToBothEnds) {
    const auto greatest = std::numeric_limits<std::uint64_t>::max();
    EXPECT_EQ(Value(greatest).asUInt64(), greatest);
    EXPECT_FALSE(Value(greatest).asInt64());
    EXPECT_EQ(Value(std::numeric_limits<std::int64_t>::min()).asInt64(),
              std::numeric_limits<std::int64_t>::min());
    EXPECT_FALSE(Value(-1).asUInt64());
}

TEST(ValueTest, CutsNumbersToUnsigned32AsThePlatformDoes) {
    EXPECT_EQ(Value(3.7).numberAsUInt32(), 3U);
    EXPECT_EQ(Value(-1).numberAsUInt32(), 4294967295U);
    EXPECT_EQ(Value(true).numberAsUInt32(), 1U);
    EXPECT_EQ(Value(std::numeric_limits<double>::quiet_NaN()).numberAsUInt32(), 0U);
    EXPECT_FALSE(Value("7").numberAsUInt32());
}

TEST(ValueTest, DictionaryKeepsOrderThroughItsIndex) {
    Value::Dictionary dictionary;
    for (int i = 0; i < 100; ++i) dictionary.set("key" + std::to_string(i), i);
    dictionary.set("key5", "replaced");
    EXPECT_FALSE(dictionary.insert("key6", "late"));
    EXPECT_TRUE(dictionary.erase("key0"));
    EXPECT_EQ(dictionary.size(), 99U);
    EXPECT_EQ(dictionary.begin()->first, "key1");
    EXPECT_EQ(*dictionary.find("key5"), Value("replaced"));
    EXPECT_EQ(*dictionary.find("key99"), Value(99));
    EXPECT_EQ(dictionary.find("key0"), nullptr);

    // From the front, from amid and from the end, until too few are left for an index, and none.
    for (int round = 0; !dictionary.empty(); ++round) {
        const auto at = static_cast<std::ptrdiff_t>(dictionary.size() - 1) * (round % 3) / 2;
        const std::string gone = (dictionary.begin() + at)->first;
        EXPECT_TRUE(dictionary.erase(gone));
        EXPECT_EQ(dictionary.find(gone), nullptr);
        for (const auto& [key, value] : dictionary) ASSERT_EQ(dictionary.find(key), &value) << key;
    }
}

TEST(ValueTest, DeepNestingEndsWithoutRecursion) {
    Value value;
    for (int i = 0; i < 1'000'000; ++i) {
        Value::Array outer;
        outer.push_back(std::move(value));
        value = Value(std::move(outer));
    }
    EXPECT_EQ(value.kind(), Value::Kind::array);
    EXPECT_FALSE(value.description().empty());
}

TEST(ValueTest, AssignsFromItsOwnInside) {
    Value value(Value::Array{Value("inner"), Value(2)});
    value = Value((*value.asArray())[0]);
    EXPECT_EQ(value, Value("inner"));
    value = Value(Value::Array{Value(Value::Array{Value(1)})});
    value = std::move((*value.asArray())[0]);
    EXPECT_EQ(value, Value(Value::Array{Value(1)}));
}

}  // namespace
}  // namespace zqcore
