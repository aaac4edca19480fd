#include "Platform/Graphics/CGContext.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <numbers>

#include "Platform/Graphics/CGImage.h"
#include "Platform/Graphics/CGPath.h"
#include "Platform/Graphics/CGRect.h"

namespace zqcore::platform {
namespace {

constexpr CGColor kRed = CGColor::rgb(1, 0, 0);
constexpr CGColor kGreen = CGColor::rgb(0, 1, 0);
constexpr CGColor kBlue = CGColor::rgb(0, 0, 1);
constexpr CGFloat kNaN = std::numeric_limits<CGFloat>::quiet_NaN();

std::shared_ptr<CGContext> context(int width = 8, int height = 8) { return CGContext::bitmap(width, height); }

void fill(CGContext& on, const CGColor& color, const CGRect& rect) {
    on.setFillColor(color);
    on.fill(rect);
}

/// Red above green, 2 by 2 pixels.
std::shared_ptr<const CGImage> twoRows() {
    const auto made = context(2, 2);
    fill(*made, kGreen, {{0, 0}, {2, 1}});
    fill(*made, kRed, {{0, 1}, {2, 1}});
    return made->makeImage();
}

/// Row and column count from the upper left.
CGColor at(const CGContext& drawn, int column, int row) { return drawn.makeImage()->colorAt(column, row); }

TEST(CGContextTest, OriginIsBelowUntilItIsFlipped) {
    const auto made = context();
    fill(*made, kRed, {{0, 0}, {2, 1}});
    EXPECT_EQ(at(*made, 0, 7), kRed);
    EXPECT_EQ(at(*made, 2, 7), CGColor::clear());
    made->flip(8);
    EXPECT_TRUE(made->isFlipped());
    fill(*made, kBlue, {{0, 0}, {2, 1}});
    EXPECT_EQ(at(*made, 0, 0), kBlue);
    EXPECT_EQ(CGPointApplyAffineTransform({1, 2}, made->ctm()), (CGPoint{1, 6}));
}

TEST(CGContextTest, ImagesStandUprightInBothSpaces) {
    for (const bool flipped : {false, true}) {
        const auto made = context();
        if (flipped) made->flip(8);
        made->drawImage(*twoRows(), {{2, 2}, {4, 4}});
        EXPECT_EQ(at(*made, 3, 2), kRed) << flipped;
        EXPECT_EQ(at(*made, 3, 5), kGreen) << flipped;
        EXPECT_EQ(at(*made, 1, 3), CGColor::clear()) << "nothing spills over the rectangle";
    }
}

TEST(CGContextTest, StatesComeBackAndSurplusRestoresDoNothing) {
    const auto made = context();
    made->setFillColor(kRed);
    made->saveGState();
    made->translateBy(4, 0);
    made->setFillColor(kBlue);
    made->clipTo(CGRectMake(0, 0, 1, 1));
    made->restoreGState();
    made->restoreGState();
    made->fill(CGRectMake(0, 0, 8, 8));
    EXPECT_EQ(at(*made, 0, 0), kRed);
    EXPECT_EQ(at(*made, 7, 7), kRed);
}

TEST(CGContextTest, AFlatTransformDrawsNothingUntilItIsRestored) {
    const auto made = context();
    made->saveGState();
    made->scaleBy(0, 1);
    EXPECT_TRUE(made->drawsNothing());
    made->scaleBy(5, 5);
    fill(*made, kRed, {{0, 0}, {8, 8}});
    made->drawImage(*twoRows(), {{0, 0}, {8, 8}});
    made->beginTransparencyLayer(0.5);
    fill(*made, kRed, {{0, 0}, {8, 8}});
    made->endTransparencyLayer();
    EXPECT_TRUE(CGRectIsEmpty(made->clipBoundingBox()));
    made->restoreGState();
    EXPECT_EQ(at(*made, 4, 4), CGColor::clear());
    fill(*made, kGreen, {{0, 0}, {8, 8}});
    EXPECT_EQ(at(*made, 4, 4), kGreen);
}

TEST(CGContextTest, PlacesThatAreNoNumbersDrawNothing) {
    const auto made = context();
    made->saveGState();
    made->translateBy(kNaN, 0);
    fill(*made, kRed, {{0, 0}, {8, 8}});
    made->restoreGState();
    fill(*made, kRed, {{0, kNaN}, {8, 8}});
    fill(*made, kRed, CGRectNull());
    made->drawImage(*twoRows(), {{0, 0}, {kNaN, 8}});
    made->drawImage(*twoRows(), {{0, 0}, {0, 8}});
    EXPECT_EQ(at(*made, 4, 4), CGColor::clear());
    fill(*made, kRed, {{8, 8}, {-8, -8}});
    EXPECT_EQ(at(*made, 4, 4), kRed) << "a negative size is a place all the same";
}

TEST(CGContextTest, BlendModes) {
    const auto made = context(2, 1);
    fill(*made, kRed, {{0, 0}, {1, 1}});
    made->setBlendMode(CGBlendMode::sourceAtop);
    fill(*made, kBlue, {{0, 0}, {2, 1}});
    EXPECT_EQ(at(*made, 0, 0), kBlue);
    EXPECT_EQ(at(*made, 1, 0), CGColor::clear()) << "only what was opaque is painted over";
    made->setBlendMode(CGBlendMode::copy);
    fill(*made, CGColor::white(1, 0), {{0, 0}, {1, 1}});
    EXPECT_EQ(at(*made, 0, 0), CGColor::clear());
}

TEST(CGContextTest, ALayerFadesAsOne) {
    const auto made = context(2, 1);
    made->beginTransparencyLayer(0.5);
    made->restoreGState();  // may not end the layer
    fill(*made, kRed, {{0, 0}, {2, 1}});
    fill(*made, kBlue, {{0, 0}, {1, 1}});
    made->saveGState();  // left open inside
    made->endTransparencyLayer();
    EXPECT_EQ(at(*made, 0, 0).withAlpha(1), kBlue) << "the red below doesn't shine through";
    EXPECT_NEAR(at(*made, 0, 0).alpha, 0.5, 1 / 255.0);
    EXPECT_EQ(at(*made, 1, 0).withAlpha(1), kRed);
}

TEST(CGContextTest, ALayerShowsThroughItsMask) {
    const auto mask = context(2, 1);
    fill(*mask, CGColor::white(0, 1), {{0, 0}, {1, 1}});
    const auto made = context(8, 8);
    made->beginTransparencyLayer(1);
    fill(*made, kRed, {{0, 0}, {8, 8}});
    made->setInterpolationQuality(CGInterpolationQuality::none);
    made->endTransparencyLayer(*mask->makeImage(), {{0, 0}, {8, 8}});
    EXPECT_EQ(at(*made, 1, 4), kRed);
    EXPECT_EQ(at(*made, 6, 4), CGColor::clear());
}

TEST(CGContextTest, AShadowFallsByItsOffsetAndSpreadsByItsBlur) {
    const auto made = context(40, 40);
    const auto square = CGPath::rect(CGRectMake(15, 15, 10, 10));
    made->drawShadow(*square, {.color = CGColor::white(0), .offset = {0, -5}, .blur = 0});
    EXPECT_EQ(at(*made, 20, 28), CGColor::white(0)) << "downwards, as y grows upwards";
    EXPECT_EQ(at(*made, 20, 16), CGColor::clear()) << "the shape itself isn't drawn";

    const auto blurred = context(40, 40);
    blurred->drawShadow(*square, {.color = CGColor::white(0), .offset = {0, 0}, .blur = 6});
    EXPECT_GT(at(*blurred, 20, 20).alpha, 0.8);
    // At the edge of a long straight side half of the Gaussian lies inside.
    EXPECT_NEAR((at(*blurred, 14, 20).alpha + at(*blurred, 15, 20).alpha) / 2, 0.5, 0.05);
    EXPECT_GT(at(*blurred, 11, 20).alpha, 0.02);
    EXPECT_EQ(at(*blurred, 1, 20), CGColor::clear());
}

TEST(CGContextTest, ALayersShadowIsThatOfWhatItHolds) {
    const auto made = context(40, 40);
    made->beginTransparencyLayer(1, CGShadow{.color = kBlue, .offset = {10, 0}, .blur = 0});
    fill(*made, kRed, {{5, 5}, {10, 30}});
    made->endTransparencyLayer();
    EXPECT_EQ(at(*made, 10, 20), kRed);
    EXPECT_EQ(at(*made, 20, 20), kBlue);
    EXPECT_EQ(at(*made, 30, 20), CGColor::clear());

    const auto faded = context(40, 40);
    faded->beginTransparencyLayer(0.5, CGShadow{.color = kBlue, .offset = {2, 0}, .blur = 0});
    fill(*faded, kRed, {{5, 5}, {10, 30}});
    faded->endTransparencyLayer();
    EXPECT_EQ(at(*faded, 10, 20).withAlpha(1), kRed) << "the shadow doesn't shine through what throws it";
    EXPECT_NEAR(at(*faded, 16, 20).alpha, 0.5, 1 / 255.0);
}

TEST(CGContextTest, GradientRunsFromStartToEnd) {
    const auto made = context(1, 100);
    const std::array<CGColor, 3> colors{kRed, kGreen, kBlue};
    made->drawLinearGradient(colors, {}, {0, 0}, {0, 100});
    EXPECT_GT(at(*made, 0, 99).red, 0.95);
    EXPECT_GT(at(*made, 0, 50).green, 0.95) << "without locations spread evenly";
    EXPECT_GT(at(*made, 0, 0).blue, 0.95);
}

TEST(CGContextTest, BitmapMakerRefusesWhatABitmapCantBe) {
    constexpr std::uint32_t info = kCGImageAlphaPremultipliedFirst | kCGBitmapByteOrder32Host;
    struct Case {
        std::int64_t width, height;
        int bits;
        std::size_t bytesPerRow;
        std::uint32_t info;
        bool made;
    };
    for (const Case& c :
         {Case{4, 4, 8, 0, info, true}, Case{4, 4, 8, 16, info, true}, Case{2, 9, 8, 16, info, true},
          Case{5, 4, 8, 16, info, false}, Case{4, 4, 8, 18, info, false}, Case{0, 4, 8, 16, info, false},
          Case{4, -1, 8, 16, info, false}, Case{4, 4, 16, 32, info, false}, Case{4, 4, 8, 16, 1, false},
          Case{40000, 1, 8, 0, info, false}, Case{32767, 32767, 8, 0, info, false}}) {
        const auto made = CGContext::bitmapContextCreate(c.width, c.height, c.bits, c.bytesPerRow, c.info);
        EXPECT_EQ(made != nullptr, c.made) << c.width << " by " << c.height << ", " << c.bytesPerRow;
    }
}

TEST(CGPathTest, ArcsTurnTheWayTheyAreTold) {
    constexpr double pi = std::numbers::pi;
    struct Case {
        double start, end;
        bool clockwise;
        CGPoint after;  ///< the point a quarter of the arc on
        int quarters;
    };
    for (const Case& c : {Case{pi / 2, -3 * pi / 2, true, {1, 0}, 4}, Case{0, pi, false, {0, 1}, 2},
                          Case{0, pi / 2, true, {0, -1}, 3}, Case{pi / 2, 0, false, {-1, 0}, 3},
                          Case{0, 9 * pi, false, {0, 1}, 4}}) {
        const auto path = CGPath::make();
        path->addArc({0, 0}, 1, c.start, c.end, c.clockwise);
        const auto& elements = path->elements();
        ASSERT_EQ(elements.size(), static_cast<std::size_t>(c.quarters) + 1) << c.start << " to " << c.end;
        EXPECT_NEAR(elements[1].points[2].x, c.after.x, 1e-9) << c.start << " to " << c.end;
        EXPECT_NEAR(elements[1].points[2].y, c.after.y, 1e-9) << c.start << " to " << c.end;
    }
}

TEST(CGPathTest, RadiiAreCutToHalfOfTheSide) {
    const auto pill = CGPath::roundedRect(CGRectMake(0, 0, 20, 10), 99, 99);
    EXPECT_EQ(pill->elements().front().points[0], (CGPoint{10, 0}));
    EXPECT_EQ(pill->boundingBox(), CGRectMake(0, 0, 20, 10));
    EXPECT_EQ(CGPath::roundedRect(CGRectMake(0, 0, 20, 10), 0, 5)->elements().size(), 5U);
    EXPECT_TRUE(CGRectIsNull(CGPath::make()->boundingBox()));
}

TEST(CGAffineTransformTest, UndoesItself) {
    const auto there = CGAffineTransformRotate(CGAffineTransformScale({1, 0.5, 0, 2, 7, -3}, 2, -3), 0.7);
    const auto back = CGAffineTransformConcat(there, CGAffineTransformInvert(there));
    for (const auto& [is, wanted] : {std::pair{back.a, 1.0}, {back.b, 0.0}, {back.d, 1.0}, {back.tx, 0.0}}) {
        EXPECT_NEAR(is, wanted, 1e-12);
    }
    EXPECT_EQ(CGRectApplyAffineTransform(CGRectMake(1, 2, 3, 4), CGAffineTransformMakeScale(-1, 2)),
              CGRectMake(-4, 4, 3, 8));
    EXPECT_TRUE(CGRectIsNull(CGRectApplyAffineTransform(CGRectNull(), CGAffineTransformMakeScale(2, 2))));
    EXPECT_FALSE(isInvertible(CGAffineTransformMakeScale(0, 2)));
}

}  // namespace
}  // namespace zqcore::platform
