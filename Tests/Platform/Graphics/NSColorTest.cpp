#include "Platform/Graphics/NSColor.h"

#include <gtest/gtest.h>

#include <array>

#include "Platform/Graphics/NSAppearance.h"
#include "Platform/Graphics/NSGraphicsContext.h"
#include "Platform/Graphics/PixelBuffer.h"

namespace zqcore::platform {
namespace {

TEST(NSColorTest, DynamicColoursFollowTheAppearanceOfTheMoment) {
    const auto label = NSColor::labelColor();
    const auto faint = label->colorWithAlphaComponent(0.25);
    EXPECT_EQ(label->cgColor(), CGColor::white(0, 0.85));
    NSAppearance::darkAqua()->performAsCurrentDrawingAppearance([&] {
        EXPECT_EQ(label->cgColor(), CGColor::white(1, 0.85));
        EXPECT_EQ(NSColor::secondaryLabelColor()->cgColor(), CGColor::white(1, 0.55));
        EXPECT_EQ(faint->cgColor(), CGColor::white(1, 0.25));
        NSAppearance::aqua()->performAsCurrentDrawingAppearance(
            [&] { EXPECT_EQ(label->cgColor(), CGColor::white(0, 0.85)); });
        EXPECT_TRUE(NSAppearance::currentDrawingAppearance()->isDark());
    });
    EXPECT_FALSE(NSAppearance::currentDrawingAppearance()->isDark());
    EXPECT_EQ(NSColor::controlAccentColor()->cgColor(), CGColor::rgb(0, 122 / 255.0, 1));
}

TEST(NSColorTest, ComponentsAreCutToTheirRange) {
    EXPECT_EQ(NSColor::colorWithRGBA(2, -1, 0.5, 7)->cgColor(), CGColor::rgb(1, 0, 0.5));
    EXPECT_TRUE(NSColor::colorWithWhite(1)->isEqual(*NSColor::whiteColor()));
}

TEST(NSColorTest, SetReachesTheCurrentContextAlone) {
    const auto context = CGContext::bitmap(1, 1);
    NSColor::whiteColor()->set();  // no context: nothing happens
    {
        const GraphicsContextScope scope(context);
        NSColor::controlAccentColor()->set();
        NSRectFill({{0, 0}, {1, 1}});
    }
    EXPECT_EQ(NSGraphicsContext::currentContext(), nullptr);
    NSRectFill({{0, 0}, {1, 1}});
    EXPECT_EQ(*context->pixels()->row(0), 0xFF007AFFU);
}

TEST(NSAppearanceTest, BestMatchIsItsOwnNameElseTheLightOne) {
    using Names = std::array<std::string_view, 2>;
    constexpr Names both{NSAppearanceNameAqua, NSAppearanceNameDarkAqua};
    EXPECT_EQ(NSAppearance::darkAqua()->bestMatchFromAppearancesWithNames(both), NSAppearanceNameDarkAqua);
    EXPECT_EQ(NSAppearance::aqua()->bestMatchFromAppearancesWithNames(both), NSAppearanceNameAqua);
    constexpr Names light{NSAppearanceNameAqua, "other"};
    EXPECT_EQ(NSAppearance::darkAqua()->bestMatchFromAppearancesWithNames(light), NSAppearanceNameAqua);
    constexpr Names dark{NSAppearanceNameDarkAqua, "other"};
    EXPECT_EQ(NSAppearance::aqua()->bestMatchFromAppearancesWithNames(dark), std::nullopt);
    EXPECT_EQ(NSAppearance::appearanceNamed("other"), nullptr);
}

}  // namespace
}  // namespace zqcore::platform
