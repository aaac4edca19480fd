#include <gtest/gtest.h>

#include "Classes/UI/TipManager/FrameCalculator.h"
#include "Classes/UI/TipManager/FrameChecker.h"
#include "Platform/Graphics/CGRect.h"

namespace zqcore {
namespace {

using Sides = FrameCalculator::LimitDirections;

TEST(FrameCheckerTest, TellsEachSideByItself) {
    const CGRect container = CGRectMake(10, 20, 100, 50);
    struct Case {
        CGRect element;
        bool top, left, bottom, right;
    };
    const Case cases[] = {
        {container, false, false, false, false},
        {CGRectMake(10, 60, 5, 10), false, false, false, false},
        {CGRectMake(10, 60, 5, 10.25), true, false, false, false},
        {CGRectMake(9.75, 30, 5, 5), false, true, false, false},
        {CGRectMake(50, 19.75, 5, 5), false, false, true, false},
        {CGRectMake(50, 30, 60.25, 5), false, false, false, true},
        {CGRectMake(0, 0, 500, 500), true, true, true, true},
        {CGRectMake(-900, 30, 5, 5), false, true, false, false},
    };
    for (const auto& [element, top, left, bottom, right] : cases) {
        const auto result = FrameChecker::check(container, element);
        const auto where = NSStringFromRect(element);
        EXPECT_EQ(result.isTopOut, top) << where;
        EXPECT_EQ(result.isLeftOut, left) << where;
        EXPECT_EQ(result.isBottomOut, bottom) << where;
        EXPECT_EQ(result.isRightOut, right) << where;
        EXPECT_EQ(result.isAllInside(), !top && !left && !bottom && !right) << where;
    }
}

TEST(FrameCheckerTest, AllFourEdgesHoldTheirPoints) {
    const CGRect rect = CGRectMake(0, 0, 10, 5);
    for (const CGPoint inside : {CGPoint{0, 0}, {10, 0}, {0, 5}, {10, 5}, {3, 3}})
        EXPECT_TRUE(ZQPointInRect(inside, rect)) << inside.x << " " << inside.y;
    for (const CGPoint outside : {CGPoint{-0.5, 0}, {10.5, 0}, {3, 5.5}, {3, -0.5}})
        EXPECT_FALSE(ZQPointInRect(outside, rect)) << outside.x << " " << outside.y;
    EXPECT_FALSE(NSPointInRect({10, 5}, rect)) << "what the platform's own leaves out";
}

TEST(FrameCalculatorTest, KeepsTheSidesThatCount) {
    const CGRect visible = CGRectMake(100, 200, 300, 150);
    const NSEdgeInsets insets{1, 2, 3, 4};
    struct Case {
        const char* what;
        CGRect content;
        NSEdgeInsets minInsets;
        Sides sides;
        CGRect expected;
    };
    const Case cases[] = {
        {"nothing to do", CGRectMake(150, 250, 40, 30), insets, Sides::allCases,
         CGRectMake(150, 250, 40, 30)},
        {"rounded alone", CGRectMake(-0.5, 0.25, 1, 1), insets, {}, CGRectMake(-1, 0, 2, 2)},
        {"rounded, then moved", CGRectMake(99.5, 250, 10, 10), insets, Sides::left,
         CGRectMake(102, 250, 11, 10)},
        {"right", CGRectMake(390, 250, 40, 30), insets, Sides::right, CGRectMake(356, 250, 40, 30)},
        {"left", CGRectMake(0, 250, 40, 30), insets, Sides::left, CGRectMake(102, 250, 40, 30)},
        {"bottom", CGRectMake(150, 0, 40, 30), insets, Sides::bottom, CGRectMake(150, 203, 40, 30)},
        {"top", CGRectMake(150, 900, 40, 30), insets, Sides::top, CGRectMake(150, 319, 40, 30)},
        {"a side that doesn't count",
         CGRectMake(390, 0, 40, 30),
         insets,
         {Sides::top, Sides::left},
         CGRectMake(390, 0, 40, 30)},
        {"too large", CGRectMake(150, 250, 900, 800), insets, Sides::allCases,
         CGRectMake(102, -451, 900, 800)},
        {"negative insets",
         CGRectMake(0, 900, 40, 30),
         {-9, -9, -9, -9},
         Sides::allCases,
         CGRectMake(100, 320, 40, 30)},
        {"rounded at the end",
         CGRectMake(0, 250, 40, 30),
         {0, 0.5, 0, 0},
         Sides::left,
         CGRectMake(100, 250, 41, 30)},
    };
    for (const auto& [what, content, minInsets, sides, expected] : cases)
        EXPECT_EQ(FrameCalculator::calculateSuitable(content, visible, minInsets, sides), expected) << what;
}

TEST(FrameCalculatorTest, SidesAreASet) {
    EXPECT_EQ(Sides::allCases.rawValue, 15);
    EXPECT_EQ((Sides{Sides::top, Sides::left, Sides::bottom, Sides::right}), Sides::allCases);
    EXPECT_EQ(Sides::top.rawValue + 2 * Sides::left.rawValue, 1 + 2 * 2);
    EXPECT_EQ(Sides::bottom.rawValue + 2 * Sides::right.rawValue, 4 + 2 * 8);

    Sides sides;
    EXPECT_TRUE(sides.isEmpty());
    EXPECT_TRUE(sides.isSubset(sides) && sides.isDisjoint(sides));
    EXPECT_TRUE(sides.insert(Sides::left));
    EXPECT_FALSE(sides.insert(Sides::left));
    EXPECT_EQ(sides.update(Sides::top), std::nullopt);
    EXPECT_EQ(sides.update({Sides::top, Sides::right}), Sides::top);
    EXPECT_EQ(sides, (Sides{Sides::left, Sides::top, Sides::right}));
    EXPECT_TRUE(sides.isSuperset({Sides::left, Sides::right}));
    EXPECT_FALSE(sides.contains({Sides::left, Sides::bottom}));
    EXPECT_EQ(sides.symmetricDifference({Sides::top, Sides::bottom}),
              (Sides{Sides::left, Sides::right, Sides::bottom}));
    EXPECT_EQ(sides.remove({Sides::top, Sides::bottom}), Sides::top);
    EXPECT_EQ(sides.remove(Sides::bottom), std::nullopt);
    EXPECT_EQ(sides.intersection(Sides::allCases), (Sides{Sides::left, Sides::right}));
}

}  // namespace
}  // namespace zqcore
