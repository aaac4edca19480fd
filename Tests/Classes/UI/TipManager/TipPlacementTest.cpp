#include "Classes/UI/TipManager/TipPlacement.h"

#include <gtest/gtest.h>

#include "Platform/Graphics/CGRect.h"

namespace zqcore {
namespace {

using tip_placement::calculateLocation;
using tip_placement::fixedWindowFrame;

// A control of 40 by 20, and a window of 100 by 60: a card of 80 by 40 in its clear margin of 10.
constexpr CGRect kTarget{{500, 300}, {40, 20}};
constexpr CGSize kWindow{100, 60};

TEST(TipPlacementTest, EverySideAndAlignment) {
    struct Case {
        TipLocation location;
        TipHorizontalAlignment horizontal;
        TipVerticalAlignment vertical;
        CGPoint origin;
    };
    using L = TipLocation;
    using H = TipHorizontalAlignment;
    using V = TipVerticalAlignment;
    const Case cases[] = {
        // The card's lower edge is 5 above the control: 320 + 5, less the margin.
        {L::top, H::center, V::center, {470, 315}},  {L::top, H::left, V::center, {490, 315}},
        {L::top, H::right, V::center, {450, 315}},   {L::bottom, H::center, V::center, {470, 245}},
        {L::bottom, H::left, V::top, {490, 245}},    {L::bottom, H::right, V::bottom, {450, 245}},
        {L::left, H::center, V::center, {405, 280}}, {L::left, H::left, V::top, {405, 270}},
        {L::left, H::right, V::bottom, {405, 290}},  {L::right, H::center, V::center, {535, 280}},
        {L::right, H::center, V::top, {535, 270}},   {L::right, H::center, V::bottom, {535, 290}},
    };
    for (const auto& [location, horizontal, vertical, origin] : cases) {
        const auto info = TipInfo::make();
        info->horizontalAlignment = horizontal;
        info->verticalAlignment = vertical;
        const CGRect frame = calculateLocation(kTarget, kWindow, *info, location);
        EXPECT_EQ(frame, (CGRect{origin, kWindow}))
            << static_cast<int>(location) << static_cast<int>(horizontal) << static_cast<int>(vertical)
            << NSStringFromRect(frame);

        info->horizontalOffset = 3;
        info->verticalOffset = 4;
        info->spacing = 25;
        const bool above = location == L::top || location == L::bottom;
        const CGPoint away{above ? 3.0 : (location == L::left ? -20.0 : 20.0),
                           above ? (location == L::top ? 20.0 : -20.0) : 4.0};
        EXPECT_EQ(calculateLocation(kTarget, kWindow, *info, location).origin,
                  (CGPoint{origin.x + away.x, origin.y + away.y}))
            << "offsets along the side alone, spacing away from it";
    }
}

TEST(TipPlacementTest, FlipsAtItsOwnEdgeAndSlidesAlongTheOthers) {
    const CGRect screen = CGRectMake(0, 0, 1440, 876);
    // Above and left of the primary screen.
    const CGRect second = CGRectMake(-1000, 900, 1000, 800);
    struct Case {
        const char* what;
        TipLocation location;
        CGRect target, visible;
        CGPoint origin;
    };
    using L = TipLocation;
    const Case cases[] = {
        {"inside", L::top, kTarget, screen, {470, 315}},
        {"touches the top", L::top, CGRectMake(500, 801, 40, 20), screen, {470, 816}},
        {"top flips", L::top, CGRectMake(500, 802, 40, 20), screen, {470, 747}},
        {"top flips, and isn't slid", L::top, CGRectMake(0, 850, 40, 20), screen, {-30, 795}},
        {"top flips even below the bottom",
         L::top,
         CGRectMake(500, 10, 40, 20),
         CGRectMake(0, 0, 1440, 60),
         {470, -45}},
        {"top slides right", L::top, CGRectMake(0, 300, 40, 20), screen, {0, 315}},
        {"top slides left", L::top, CGRectMake(1400, 300, 40, 20), screen, {1340, 315}},
        {"left beats right", L::top, CGRectMake(10, 300, 40, 20), CGRectMake(0, 0, 60, 876), {0, 315}},
        {"top doesn't mind the bottom", L::top, CGRectMake(500, -80, 40, 20), screen, {470, -65}},
        {"bottom flips", L::bottom, CGRectMake(500, 50, 40, 20), screen, {470, 65}},
        {"bottom slides", L::bottom, CGRectMake(1400, 300, 40, 20), screen, {1340, 245}},
        {"left flips", L::left, CGRectMake(90, 300, 40, 20), screen, {125, 280}},
        {"left slides up", L::left, CGRectMake(500, 0, 40, 20), screen, {405, 0}},
        {"left slides down", L::left, CGRectMake(500, 850, 40, 20), screen, {405, 816}},
        {"top beats bottom", L::left, CGRectMake(500, 10, 40, 20), CGRectMake(0, 0, 1440, 40), {405, -20}},
        {"right flips", L::right, CGRectMake(1400, 300, 40, 20), screen, {1305, 280}},
        {"right slides", L::right, CGRectMake(500, 0, 40, 20), screen, {535, 0}},
        {"second screen", L::left, CGRectMake(-995, 905, 40, 20), second, {-960, 885}},
        {"second screen slides", L::bottom, CGRectMake(-40, 1500, 40, 20), second, {-100, 1445}},
        {"second screen flips", L::top, CGRectMake(-500, 1675, 40, 20), second, {-530, 1620}},
    };
    for (const auto& [what, location, target, visible, origin] : cases) {
        const auto info = TipInfo::make();
        info->location = location;
        const CGRect frame = fixedWindowFrame(target, kWindow, *info, visible);
        EXPECT_EQ(frame, (CGRect{origin, kWindow})) << what << ": " << NSStringFromRect(frame);
    }
}

}  // namespace
}  // namespace zqcore
