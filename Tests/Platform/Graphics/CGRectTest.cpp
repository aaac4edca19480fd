#include "Platform/Graphics/CGRect.h"

#include <gtest/gtest.h>

namespace zqcore::platform {
namespace {

TEST(CGRectTest, IntegralRoundsOutwards) {
    EXPECT_EQ(CGRectIntegral({{0.5, 0}, {1, 1}}), CGRectMake(0, 0, 2, 1));
    EXPECT_EQ(CGRectIntegral({{0.5, 0.5}, {0, 0}}), CGRectMake(0, 0, 1, 1));
    EXPECT_EQ(CGRectIntegral({{4.25, -1.5}, {-2, -2}}), CGRectMake(2, -4, 3, 3));
    EXPECT_TRUE(CGRectIsNull(CGRectIntegral(CGRectNull())));
}

TEST(CGRectTest, ContainmentDiffersAtTheEdges) {
    const CGRect rect = CGRectMake(10, 20, 30, 40);
    EXPECT_TRUE(CGRectContainsPoint(rect, {10, 20}));
    EXPECT_FALSE(CGRectContainsPoint(rect, {40, 30}));
    EXPECT_FALSE(NSPointInRect({20, 60}, rect));
    EXPECT_FALSE(CGRectContainsPoint(CGRectMake(10, 20, 0, 40), {10, 20}));
    EXPECT_FALSE(NSMouseInRect({20, 20}, rect, false));
    EXPECT_TRUE(NSMouseInRect({20, 60}, rect, false));
    EXPECT_TRUE(NSMouseInRect({20, 20}, rect, true));
    EXPECT_FALSE(NSMouseInRect({20, 60}, rect, true));
    EXPECT_TRUE(CGRectContainsRect(rect, rect));
    EXPECT_FALSE(CGRectContainsRect(rect, CGRectMake(10, 20, 30, 40.5)));
}

TEST(CGRectTest, UnionIntersectionAndInset) {
    EXPECT_EQ(CGRectUnion(CGRectMake(0, 0, 1, 1), CGRectMake(4, -2, 1, 1)), CGRectMake(0, -2, 5, 3));
    EXPECT_EQ(CGRectIntersection(CGRectMake(0, 0, 4, 4), CGRectMake(3, 1, 4, 1)), CGRectMake(3, 1, 1, 1));
    EXPECT_EQ(CGRectIntersection(CGRectMake(0, 0, 4, 4), CGRectMake(4, 0, 4, 4)), CGRectMake(4, 0, 0, 4));
    EXPECT_TRUE(CGRectIsNull(CGRectIntersection(CGRectMake(0, 0, 4, 4), CGRectMake(5, 0, 4, 4))));
    EXPECT_EQ(CGRectInset(CGRectMake(0, 0, 4, 4), 1, -1), CGRectMake(1, -1, 2, 6));
    EXPECT_TRUE(CGRectIsNull(CGRectInset(CGRectMake(0, 0, 4, 4), 3, 0)));
}

TEST(CGRectTest, TextsHaveNoNeedlessPoint) {
    EXPECT_EQ(NSStringFromRect({{1, -2.5}, {0.1, 1e21}}), "{{1, -2.5}, {0.1, 1000000000000000000000}}");
    EXPECT_EQ(NSStringFromSize({-0.0, 3}), "{0, 3}");
}

}  // namespace
}  // namespace zqcore::platform
