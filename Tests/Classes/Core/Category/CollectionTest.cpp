#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Classes/Core/Category/NSArrayZQ.h"
#include "Classes/Core/Category/NSDictionaryZQ.h"
#include "Classes/Core/Extension/CollectionExtension.h"
#include "Classes/Core/Extension/StringExtension.h"
#include "TestKit/LogCapture.h"

namespace zqcore {
namespace {

using testkit::LogCapture;
using Words = std::vector<std::string>;
using Numbers = std::vector<int>;

const Words kWords{"one", "two", "three", "four"};

TEST(NSArrayZQTest, AnEmptyResultIsAbsent) {
    const auto nothing = [](const auto&) { return std::optional<int>(); };
    const auto none = [](const auto&) { return false; };
    EXPECT_EQ(zq_map(Words(), [](const std::string& word) { return word; }), std::nullopt);
    EXPECT_EQ(zq_map(kWords, nothing), std::nullopt);
    EXPECT_EQ(zq_where(kWords, none), std::nullopt);
    EXPECT_EQ(zq_find(kWords, nothing), std::nullopt);
    EXPECT_EQ(zq_combine(kWords, [](const auto&) { return Words(); }), std::nullopt);
    EXPECT_EQ((zq_groupBy<int>(Words(), [](const auto&, auto) { return 1; })), std::nullopt);
    EXPECT_EQ((zq_groupBy<int>(kWords, nullptr)), std::nullopt) << "no key, no groups";
    auto words = kWords;
    EXPECT_EQ(zq_removeWhere(words, none), std::nullopt);
    EXPECT_EQ(words, kWords);
}

TEST(NSArrayZQTest, BlocksTakeElementIndexAndStop) {
    EXPECT_EQ(zq_map(kWords,
                     [](const std::string& word, std::size_t index, bool& stop) {
                         stop = index == 2;
                         return index == 1 ? std::nullopt : std::optional(word.size());
                     }),
              (std::vector<std::size_t>{3, 5}))
        << "the answer beside the stop still counts";
    EXPECT_EQ(zq_where(kWords, [](const auto&, std::size_t index) { return index % 2 == 1; }),
              (Words{"two", "four"}));
    EXPECT_EQ(zq_combine(kWords,
                         [](const std::string& word) {
                             return Words{word, word.substr(0, 1)};
                         })
                  ->size(),
              8U);
    EXPECT_EQ(zq_map(Numbers{0, 1}, [](int number) { return number == 0; }), (std::vector<bool>{true, false}))
        << "false is an answer, not nothing";
    EXPECT_EQ(zq_map(kWords,
                     [](const std::string& word) {
                         return word.size() > 3 ? std::make_shared<std::string>(word) : nullptr;
                     })
                  ->size(),
              2U);
}

TEST(NSArrayZQTest, FindGivesTheAnswerAndEndsThere) {
    int calls = 0;
    EXPECT_EQ(zq_find(kWords,
                      [&](const std::string& word) {
                          ++calls;
                          return word[0] == 't' ? std::optional(word + "!") : std::nullopt;
                      }),
              "two!");
    EXPECT_EQ(calls, 2);
}

TEST(NSArrayZQTest, RemovesAfterTheEnumeration) {
    Words words = kWords;
    EXPECT_EQ(zq_removeWhere(words,
                             [&](const std::string& word, std::size_t, bool& stop) {
                                 EXPECT_EQ(words.size(), 4U);
                                 stop = word == "three";
                                 return word.size() > 3 || word == "one";
                             }),
              (Words{"one", "three"}));
    EXPECT_EQ(words, (Words{"two", "four"}));
    const auto thrower = [](const std::string&) -> bool { throw std::runtime_error("no"); };
    EXPECT_THROW((void)zq_removeWhere(words, thrower), std::runtime_error);
    EXPECT_EQ(words, (Words{"two", "four"}));
}

TEST(NSArrayZQTest, IndexOfEachElementWithALineForAnEqualOne) {
    LogCapture capture;
    EXPECT_EQ(zq_objectToIndexDictionary(Words()), std::nullopt);
    const auto indices = zq_objectToIndexDictionary(kWords);
    EXPECT_EQ(*indices->find("three"), 2U);
    EXPECT_TRUE(capture.silent()) << capture;
    const auto equal = zq_objectToIndexDictionary(std::vector<Value>{"a", 1, "b", 1.0, true});
    EXPECT_EQ(equal->size(), 3U) << "numbers are equal by value";
    EXPECT_EQ(*equal->find(1), 4U) << "the later index";
    EXPECT_EQ(capture.count("数组不能包含相同元素"), 2U);
    EXPECT_TRUE(capture.has(LogCapture::error, "数组不能包含相同元素"));
}

TEST(NSArrayZQTest, GroupsByKeyWithNothingAsAGroup) {
    const auto firstLetter = [](const std::string& word, std::size_t) {
        return word == "one" || word == "four" ? std::nullopt : std::optional(word.substr(0, 1));
    };
    using Groups = std::vector<Words>;
    EXPECT_EQ((zq_groupBy<std::string>(kWords, firstLetter)), (Groups{{"one", "four"}, {"two", "three"}}));

    const auto bySize = [](const Words& a, const std::vector<std::optional<std::string>>& aKeys,
                           const Words& b, const std::vector<std::optional<std::string>>& bKeys) {
        EXPECT_EQ(a.size(), aKeys.size());
        EXPECT_EQ(b.size(), bKeys.size());
        EXPECT_NE(aKeys[0], bKeys[0]);
        return aKeys[0].has_value() ? NSOrderedAscending : NSOrderedDescending;
    };
    const auto byText = [](const std::string& a, const auto& aKey, const std::string& b, const auto& bKey) {
        EXPECT_EQ(aKey, bKey);
        return a < b ? NSOrderedAscending : a == b ? NSOrderedSame : NSOrderedDescending;
    };
    EXPECT_EQ((zq_groupBy<std::string>(kWords, firstLetter, bySize, byText)),
              (Groups{{"three", "two"}, {"four", "one"}}));

    const std::vector<Value> mixed{1, "1", 1.0, nullptr, true};
    EXPECT_EQ((zq_groupBy<Value>(mixed, [](const Value& one, std::size_t) { return one; })),
              (std::vector<std::vector<Value>>{{1, 1.0, true}, {"1"}, {nullptr}}));
}

TEST(NSArrayZQTest, SortsAreStableAndSurviveAContradiction) {
    Numbers numbers(1000);
    for (int i = 0; i < 1000; ++i) numbers[static_cast<std::size_t>(i)] = i * 7919 % 1000;
    const auto all = [](int, std::size_t) { return 0; };
    const auto byTens = [](int a, const auto&, int b, const auto&) {
        return a / 10 < b / 10 ? NSOrderedAscending : a / 10 > b / 10 ? NSOrderedDescending : NSOrderedSame;
    };
    std::vector<std::pair<int, std::size_t>> places;
    for (std::size_t i = 0; i < numbers.size(); ++i) places.emplace_back(numbers[i] / 10, i);
    std::ranges::sort(places);
    Numbers expected;
    for (const auto& [tens, place] : places) expected.push_back(numbers[place]);
    EXPECT_EQ((zq_groupBy<int>(numbers, all, nullptr, byTens))->at(0), expected);

    unsigned state = 1;
    const auto anything = [&](int, const auto&, int, const auto&) {
        state = state * 1664525 + 1013904223;
        return static_cast<NSComparisonResult>(static_cast<int>(state >> 30U) % 3 - 1);
    };
    auto shuffled = (zq_groupBy<int>(numbers, all, nullptr, anything))->at(0);
    std::ranges::sort(shuffled);
    std::ranges::sort(numbers);
    EXPECT_EQ(shuffled, numbers) << "some order, but of all of them";
}

TEST(CollectionTest, SafeAccessNeverLeavesTheArray) {
    for (const std::int64_t index : {std::int64_t{-1}, std::int64_t{4}, INT64_MIN, INT64_MAX}) {
        EXPECT_EQ(zq_safeObjectAtIndex(kWords, index), std::nullopt) << index;
        EXPECT_EQ(safeGet(kWords, index), std::nullopt) << index;
    }
    EXPECT_EQ(zq_safeObjectAtIndex(kWords, 0), "one");
    EXPECT_EQ(safeGet(kWords, 3), "four");
    EXPECT_EQ(safeGet(std::vector<std::shared_ptr<int>>{nullptr}, 1), nullptr);
}

TEST(CollectionTest, EmptyIsAbsent) {
    EXPECT_EQ(asNotEmptyStrings({"", "a", "", "b"}), (Words{"a", "b"}));
    EXPECT_EQ(asNotEmptyStrings({"", ""}), std::nullopt);
    EXPECT_EQ(asNotEmpty(Numbers()), std::nullopt);
    EXPECT_EQ(asNotEmpty(Numbers{1}), Numbers{1});
    EXPECT_EQ(asNotEmpty(std::string()), std::nullopt);
    EXPECT_FALSE(isNotEmpty(Value::Dictionary()));
    EXPECT_TRUE(isNotEmpty(std::string("a")));
}

TEST(CollectionTest, TurnsIntoThePlatformsOwn) {
    EXPECT_EQ(toNSArray(Numbers{1, 2}), (Value::Array{1, 2}));
    EXPECT_EQ(*toNSMutableArray(kWords), (Value::Array{"one", "two", "three", "four"}));
    EXPECT_EQ(toNSDictionary(std::map<std::string, bool>{{"on", true}}), (Value::Dictionary{{"on", true}}));
}

TEST(NSDictionaryZQTest, SwapsKeysAndObjects) {
    const auto reversed = zq_reverseKeysAndObjectsDictionary(Value::Dictionary{{"a", 1}, {"b", "two"}});
    EXPECT_EQ(*reversed->find(1.0), "a");
    EXPECT_EQ(*reversed->find("two"), "b");
    EXPECT_EQ(zq_reverseKeysAndObjectsDictionary(*reversed)->size(), 2U);
    EXPECT_EQ(zq_reverseKeysAndObjectsDictionary(Value::Dictionary())->size(), 0U);
    EXPECT_EQ(zq_reverseKeysAndObjectsDictionary(Value::Dictionary{{"a", 1}, {"b", true}}), std::nullopt);
}

TEST(NSDictionaryZQTest, ParameterStringIsPlainOrAbsent) {
    EXPECT_EQ(zq_parameterString({{"b", "1&2"}, {"a", ""}}), "b=1&2&a=") << "in order, nothing escaped";
    EXPECT_EQ(zq_parameterString({}), std::nullopt);
    EXPECT_EQ(zq_parameterString({{"a", "1"}, {"b", 2}, {"c", "3"}}), std::nullopt);
}

TEST(NSDictionaryZQTest, SafeSetStoresNullForNothing) {
    Value::Dictionary dictionary;
    zq_safeSetObject(dictionary, std::nullopt, "gone");
    zq_safeSetObject(dictionary, 1, std::nullopt);
    zq_safeSetObject(dictionary, 2, "there");
    EXPECT_EQ(dictionary, (Value::Dictionary{{"gone", nullptr}, {"there", 2}}));
}

TEST(NSDictionaryZQTest, DeepCopyRefusesWhatNoArchiveHolds) {
    LogCapture capture;
    // Moved from level to level: a copy of each would take forever.
    const auto nested = [](int levels) {
        Value inner = "core";
        for (int i = 1; i < levels; ++i) {
            Value::Array array;
            array.push_back(std::move(inner));
            inner = std::move(array);
        }
        Value::Dictionary outer;
        outer.set("k", std::move(inner));
        return outer;
    };
    EXPECT_EQ(zq_deepCopy({}), Value::Dictionary());
    const Value::Dictionary null{{"null", nullptr}};
    EXPECT_EQ(zq_deepCopy(null), null);
    EXPECT_EQ(zq_deepCopy(nested(512)), nested(512));
    EXPECT_TRUE(capture.silent());
    EXPECT_EQ(zq_deepCopy(nested(513)), std::nullopt);
    EXPECT_EQ(zq_deepCopy(nested(100'000)), std::nullopt);
    EXPECT_EQ(capture.messages(LogCapture::error), (Words{"深拷贝异常 nested deeper than 512 levels",
                                                          "深拷贝异常 nested deeper than 512 levels"}));
}

TEST(NullValueTest, AnswersEveryAccessorWithNothing) {
    const Value null;
    EXPECT_FALSE(null.asBool() || null.asInt64() || null.asUInt64() || null.asReal() || null.asDate() ||
                 null.numberAsDouble() || null.numberAsUInt32());
    EXPECT_FALSE(null.asString() || null.asData() || null.asArray() || null.asDictionary());
}

}  // namespace
}  // namespace zqcore
