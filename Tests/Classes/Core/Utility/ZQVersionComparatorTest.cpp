#include "Classes/Core/Utility/ZQVersionComparator.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>

#include "Classes/Core/Utility/SeedChecker.h"

namespace zqcore {

class SeedCheckerTestAccess {
  public:
    static void setSeed(SeedChecker& checker, std::int64_t seed) { checker.seed_ = seed; }
};

namespace {

struct Case {
    std::string_view a, b;
    NSComparisonResult order;
};

constexpr std::array kOrders{
    Case{"1.2", "1.10", NSOrderedAscending},
    Case{"1.0", "1.0.0", NSOrderedAscending},
    Case{"1.0", "1.0a", NSOrderedDescending},
    Case{"1.0a", "1.0b", NSOrderedAscending},
    Case{"1.0b1", "1.0b2", NSOrderedAscending},
    Case{"1.0b", "1.0b1", NSOrderedAscending},
    Case{"1.0-1", "1.0.1", NSOrderedSame},
    Case{"01.2", "1.2", NSOrderedSame},
    Case{"v1.0", "1.0", NSOrderedAscending},
    Case{"1.2", "1..", NSOrderedDescending},
    Case{"a", ".", NSOrderedAscending},
    Case{"", "", NSOrderedSame},
    Case{"", "1", NSOrderedAscending},
    Case{"", ".", NSOrderedAscending},
    Case{"", "a", NSOrderedDescending},
    Case{"3", "12", NSOrderedAscending},
    Case{"1 2", "1.2", NSOrderedSame},
    Case{"1..2", "1.2", NSOrderedAscending},
    Case{"1A", "1a", NSOrderedAscending},
    Case{"1ab", "1a", NSOrderedDescending},
    // A symbol is no punctuation, so it joins the letters.
    Case{"1+2", "1.2", NSOrderedAscending},
    Case{"1a+b2", "1a+b10", NSOrderedAscending},
    // Numbers that fit 64 bits count, others are 0.
    Case{"9223372036854775807", "9223372036854775806", NSOrderedDescending},
    Case{"9223372036854775808", "1", NSOrderedAscending},
    Case{"9223372036854775808", "0", NSOrderedSame},
    Case{"00000000000000000000000007", "7", NSOrderedSame},
    // Other digits are number parts of value 0, alone and beside ASCII ones.
    Case{"\u0663", "0", NSOrderedSame},
    Case{"1\u0663", "0", NSOrderedSame},
    Case{"\u0663", "a", NSOrderedDescending},
    Case{"5\u0301", "0", NSOrderedSame},
    // The other blanks and punctuation are separators, CR LF is a single one.
    Case{"1\u30002", "1.2", NSOrderedSame},
    Case{"1\u20142", "1.2", NSOrderedSame},
    Case{"1\r\n2", "1.2", NSOrderedSame},
    Case{"1\n\r2", "1..2", NSOrderedSame},
    Case{"1\u200B2", "1.2", NSOrderedSame},
    // Canonical equivalents are equal; the rest goes by character value, not by UTF-16 unit.
    Case{"1\u00E9", "1e\u0301", NSOrderedSame},
    Case{"1\u00E9z", "1e\u0301a", NSOrderedDescending},
    Case{"1\U0001F600", "1\uFF21", NSOrderedDescending},
    Case{"1z", "1\u4E2D", NSOrderedAscending},
};

constexpr NSComparisonResult reversed(NSComparisonResult order) {
    return static_cast<NSComparisonResult>(-static_cast<int>(order));
}

TEST(ZQVersionComparatorTest, OrdersAsTabledBothWays) {
    for (const auto& [a, b, order] : kOrders) {
        EXPECT_EQ(ZQVersionComparator::compareVersion(a, b), order) << a << " against " << b;
        EXPECT_EQ(ZQVersionComparator::compareVersion(b, a), reversed(order))
            << "mirrored " << a << ", " << b;
    }
}

TEST(ZQVersionComparatorTest, IsATotalOrder) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE(testing::Message() << "seed " << seed);
    std::mt19937 random(seed);
    constexpr std::array<std::string_view, 16> kPieces{
        "1", "2", "0", "10", ".", ".", "-", " ", "a", "b", "A", "\r", "e\u0301", "\u00E9", "\u0663", "\xFF"};
    const auto version = [&] {
        std::string text;
        for (auto pieces = random() % 6; pieces > 0; --pieces) text += kPieces[random() % kPieces.size()];
        return text;
    };
    const auto compare = ZQVersionComparator::compareVersion;
    for (int i = 0; i < 20000; ++i) {
        const auto a = version();
        const auto b = version();
        const auto c = version();
        ASSERT_EQ(compare(a, a), NSOrderedSame) << a;
        ASSERT_EQ(compare(a, b), reversed(compare(b, a))) << a << " | " << b;
        if (compare(a, b) <= 0 && compare(b, c) <= 0) {
            ASSERT_LE(compare(a, c), 0) << a << " | " << b << " | " << c;
        }
        if (compare(a, b) == NSOrderedSame) {
            ASSERT_EQ(compare(a, c), compare(b, c)) << a << " | " << b << " | " << c;
        }
    }
}

TEST(SeedCheckerTest, KnowsAnOutdatedSeed) {
    SeedChecker checker;
    EXPECT_EQ(checker.fetch(), 0);
    const auto seed = checker.increase();
    EXPECT_TRUE(checker.check(seed));
    EXPECT_EQ(checker.increase(), 2);
    EXPECT_FALSE(checker.check(seed));
}

TEST(SeedCheckerTest, StartsAgainBeforeTheGreatestNumber) {
    SeedChecker checker;
    SeedCheckerTestAccess::setSeed(checker, 9223372036854775805);
    EXPECT_EQ(checker.increase(), 9223372036854775806);
    EXPECT_EQ(checker.increase(), 0);
    EXPECT_TRUE(checker.check(0));
}

}  // namespace
}  // namespace zqcore
