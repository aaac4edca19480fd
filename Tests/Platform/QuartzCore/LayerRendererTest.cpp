#include "Platform/QuartzCore/LayerRenderer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGImage.h"
#include "Platform/Graphics/CGPath.h"
#include "Platform/QuartzCore/CAGradientLayer.h"
#include "Platform/QuartzCore/CAShapeLayer.h"
#include "TestKit/ManualClock.h"

namespace zqcore::platform {
namespace {

using namespace std::chrono_literals;

constexpr CGColor kRed = CGColor::rgb(1, 0, 0);
constexpr CGColor kGreen = CGColor::rgb(0, 1, 0);
constexpr CGColor kBlue = CGColor::rgb(0, 0, 1);
constexpr CGColor kClear = CGColor::clear();

/// A root of 20 by 20 points, drawn a pixel a point; places count from the lower left.
class LayerRendererTest : public testing::Test {
  protected:
    LayerRendererTest() { root_->setFrame({{0, 0}, {20, 20}}); }

    std::shared_ptr<CALayer> add(const CGRect& frame, const CGColor& color,
                                 const std::shared_ptr<CALayer>& to = nullptr) {
        auto layer = makeObject<CALayer>();
        layer->setFrame(frame);
        layer->setBackgroundColor(color);
        (to ? to : root_)->addSublayer(layer);
        return layer;
    }
    void render(CGFloat scale = 1) {
        const auto context = CGContext::bitmap(static_cast<int>(20 * scale), static_cast<int>(20 * scale));
        context->scaleBy(scale, scale);
        LayerRenderer::render(*root_, *context);
        image_ = context->makeImage();
    }
    /// The colour at a pixel, rounded to tenths, which is enough to tell them apart.
    CGColor at(int x, int y) const {
        const CGColor color = image_->colorAt(x, image_->height() - 1 - y);
        const auto tenths = [](CGFloat value) { return std::round(value * 10) / 10; };
        return {tenths(color.red), tenths(color.green), tenths(color.blue), tenths(color.alpha)};
    }

    testkit::ManualClock clock_;
    std::shared_ptr<CALayer> root_ = makeObject<CALayer>();
    std::shared_ptr<const CGImage> image_;
};

TEST_F(LayerRendererTest, YTurnsAtEachFlippedLayer) {
    const auto flipped = add({{2, 2}, {16, 16}}, kClear);
    flipped->setGeometryFlipped(true);
    const auto top = add({{0, 0}, {4, 4}}, kRed, flipped);
    const auto low = add({{0, 12}, {4, 4}}, kGreen, flipped);
    low->setGeometryFlipped(true);
    add({{0, 0}, {2, 2}}, kBlue, low);
    render();
    EXPECT_EQ(at(3, 17), kRed) << "y 0 is above";
    EXPECT_EQ(at(3, 13), kClear);
    EXPECT_EQ(at(3, 5), kGreen);
    EXPECT_EQ(at(3, 2), kBlue) << "turned twice, y 0 is below again";
    top->setBounds({{0, 0}, {4, -2}});
    render();
    EXPECT_EQ(at(3, 17), kClear) << "a negative size draws nothing";
}

TEST_F(LayerRendererTest, TheBoundsOriginScrollsWhatIsInside) {
    const auto clip = add({{5, 5}, {10, 10}}, kClear);
    clip->setMasksToBounds(true);
    add({{0, 0}, {4, 4}}, kRed, clip);
    clip->setBounds({{-3, 2}, {10, 10}});
    render();
    EXPECT_EQ(at(8, 5), kRed);
    EXPECT_EQ(at(8, 6), kRed);
    EXPECT_EQ(at(8, 7), kClear);
    EXPECT_EQ(at(7, 5), kClear);
    EXPECT_EQ(at(8, 4), kClear) << "cut off by the mask";
    clip->setMasksToBounds(false);
    render();
    EXPECT_EQ(at(8, 4), kRed);
}

TEST_F(LayerRendererTest, TheBorderLiesInsideAndOnTopOfAll) {
    const auto layer = add({{4, 4}, {12, 12}}, kRed);
    layer->setBorderWidth(2);
    layer->setBorderColor(kBlue);
    add({{-2, 4}, {16, 4}}, kGreen, layer);
    render();
    EXPECT_EQ(at(3, 9), kGreen) << "outside of the bounds nothing covers it";
    EXPECT_EQ(at(4, 9), kBlue);
    EXPECT_EQ(at(5, 9), kBlue);
    EXPECT_EQ(at(6, 9), kGreen);
    EXPECT_EQ(at(6, 6), kRed);
    EXPECT_EQ(at(3, 6), kClear);
    layer->setBorderWidth(7);
    render();
    EXPECT_EQ(at(9, 6), kBlue) << "a border wider than half the layer covers it";
    EXPECT_EQ(at(3, 6), kClear);
}

TEST_F(LayerRendererTest, CornersRoundBackgroundAndMaskedSublayers) {
    const auto layer = add({{0, 0}, {20, 20}}, kRed);
    layer->setCornerRadius(100);
    const auto inner = add({{0, 0}, {20, 20}}, kGreen, layer);
    render();
    EXPECT_EQ(at(0, 0), kGreen) << "not masked";
    layer->setMasksToBounds(true);
    render();
    EXPECT_EQ(at(0, 0), kClear);
    EXPECT_EQ(at(10, 0), kGreen) << "the radius is held at half the side";
    inner->setHidden(true);
    render();
    EXPECT_EQ(at(0, 0), kClear);
    EXPECT_EQ(at(10, 10), kRed);
}

TEST_F(LayerRendererTest, OpacityActsOnTheWholeGroup) {
    const auto group = add({{0, 0}, {20, 20}}, kRed);
    add({{0, 0}, {10, 20}}, kBlue, group);
    group->setOpacity(0.5);
    render();
    EXPECT_EQ(at(5, 5), kBlue.withAlpha(0.5)) << "red doesn't shine through the blue on it";
    EXPECT_EQ(at(15, 5), kRed.withAlpha(0.5));
    group->setOpacity(0);
    render();
    EXPECT_EQ(at(15, 5), kClear);
}

TEST_F(LayerRendererTest, AShadowFallsInTheLayersOwnSense) {
    const auto layer = add({{6, 6}, {8, 8}}, kRed);
    layer->setShadowOpacity(1);
    layer->setShadowRadius(0);
    layer->setShadowOffset({0, -4});
    render();
    EXPECT_EQ(at(10, 3), CGColor::white(0));
    EXPECT_EQ(at(10, 16), kClear);
    EXPECT_EQ(at(10, 10), kRed);
    layer->setGeometryFlipped(true);
    render();
    EXPECT_EQ(at(10, 3), kClear);
    EXPECT_EQ(at(10, 16), CGColor::white(0)) << "the same numbers point upwards where y runs downwards";
    layer->setMasksToBounds(true);
    render();
    EXPECT_EQ(at(10, 16), kClear) << "masking cuts it off";
    // Without a background of its own what is inside casts it.
    layer->setMasksToBounds(false);
    layer->setBackgroundColor(kClear);
    add({{0, 0}, {2, 8}}, kGreen, layer);
    render();
    EXPECT_EQ(at(6, 16), CGColor::white(0));
    EXPECT_EQ(at(10, 16), kClear);
    EXPECT_EQ(at(6, 10), kGreen);
}

TEST_F(LayerRendererTest, DrawnContentsAreStretchedSharpAndCutAtTheBounds) {
    const auto layer = add({{4, 4}, {8, 8}}, kClear);
    layer->setGeometryFlipped(true);
    layer->setDrawHandler([](CGContext& context) {
        EXPECT_TRUE(context.isFlipped());
        context.setFillColor(kRed);
        context.fill({{-5, 0}, {9, 4}});
    });
    render();
    EXPECT_EQ(at(4, 11), kRed);
    EXPECT_EQ(at(7, 8), kRed);
    EXPECT_EQ(at(8, 11), kClear);
    EXPECT_EQ(at(4, 7), kClear);
    EXPECT_EQ(at(3, 11), kClear) << "cut";
    layer->setFrame({{4.25, 4.25}, {4, 4}});
    render(8);
    EXPECT_EQ(at(8 * 4 + 2, 8 * 7), kRed) << "kept as operations: edges lie where they are, at any scale";
    EXPECT_EQ(at(8 * 4 + 1, 8 * 7), kClear);
    EXPECT_EQ(at(8 * 6 + 1, 8 * 7), kRed);
    EXPECT_EQ(at(8 * 6 + 2, 8 * 7), kClear);
}

TEST_F(LayerRendererTest, ContentsStandUprightInBothSenses) {
    const auto bitmap = CGContext::bitmap(2, 2);
    bitmap->setFillColor(kGreen);
    bitmap->fill({{0, 1}, {2, 1}});
    const auto layer = add({{0, 0}, {20, 20}}, kClear);
    layer->setContents(bitmap->makeImage());
    for (const bool flipped : {false, true}) {
        layer->setGeometryFlipped(flipped);
        render();
        EXPECT_EQ(at(10, 18), kGreen) << flipped;
        EXPECT_EQ(at(10, 2), kClear) << flipped;
    }
}

TEST_F(LayerRendererTest, WhatShowsIsTheMomentAskedFor) {
    root_->setTreeChangeHandler([] {});
    const auto layer = add({{0, 0}, {4, 4}}, kRed);
    layer->removeAllAnimations();
    layer->setFrame({{16, 0}, {4, 4}});
    render();
    EXPECT_EQ(at(1, 1), kRed);
    EXPECT_EQ(at(18, 1), kClear);
    clock_.advance(250ms);
    render();
    EXPECT_EQ(at(18, 1), kRed);
}

TEST_F(LayerRendererTest, ARingIsStrokedByItsLength) {
    const auto ring = makeObject<CAShapeLayer>();
    ring->setFrame({{0, 0}, {20, 20}});
    ring->setFillColor(kClear);
    ring->setStrokeColor(kRed);
    ring->setLineWidth(4);
    const auto path = CGPath::make();
    path->addArc({10, 10}, 8, std::numbers::pi / 2, -3 * std::numbers::pi / 2, true);
    ring->setPath(path);
    root_->addSublayer(ring);
    struct Case {
        CGFloat start, end;
        bool right, low, left;
    };
    // Clockwise from the top: right at a quarter, below at a half, left at three quarters.
    const Case cases[] = {{0, 0.4, true, false, false},   {0, 0.6, true, true, false},
                          {0.4, 0.6, false, true, false}, {0, 1, true, true, true},
                          {0.6, 7, false, false, true},   {0, 0, false, false, false},
                          {0.7, 0.3, false, false, false}};
    ring->setLineCap(kCALineCapSquare);
    for (const auto& [start, end, right, low, left] : cases) {
        ring->setStrokeStart(start);
        ring->setStrokeEnd(end);
        render();
        SCOPED_TRACE(testing::Message() << start << " to " << end);
        EXPECT_EQ(at(17, 10), right ? kRed : kClear);
        EXPECT_EQ(at(10, 2), low ? kRed : kClear);
        EXPECT_EQ(at(2, 10), left ? kRed : kClear);
        EXPECT_EQ(at(10, 10), kClear);
    }
}

TEST_F(LayerRendererTest, PartsOfAPathOfSeveralPiecesAreCutByLength) {
    const auto shape = makeObject<CAShapeLayer>();
    shape->setFrame({{0, 0}, {20, 20}});
    shape->setStrokeColor(kRed);
    shape->setFillColor(kClear);
    shape->setLineWidth(2);
    const auto path = CGPath::make();
    path->moveTo({0, 3});
    path->lineTo({20, 3});
    path->moveTo({0, 13});
    path->lineTo({20, 13});
    shape->setPath(path);
    shape->setStrokeStart(0.25);
    shape->setStrokeEnd(0.75);
    root_->addSublayer(shape);
    render();
    EXPECT_EQ(at(9, 3), kClear);
    EXPECT_EQ(at(10, 3), kRed);
    EXPECT_EQ(at(9, 13), kRed);
    EXPECT_EQ(at(10, 13), kClear);
    EXPECT_EQ(at(10, 8), kClear) << "no line between the pieces";
}

TEST_F(LayerRendererTest, AGradientRunsUpwardsAndKeepsToTheCorners) {
    const auto gradient = makeObject<CAGradientLayer>();
    gradient->setFrame({{0, 0}, {20, 20}});
    gradient->setColors({kRed, kBlue});
    gradient->setCornerRadius(10);
    root_->addSublayer(gradient);
    render();
    EXPECT_EQ(at(0, 0), kClear);
    EXPECT_GT(at(10, 1).red, 0.8);
    EXPECT_GT(at(10, 18).blue, 0.8);
    gradient->setLocations({0.9, 1});
    render();
    EXPECT_EQ(at(10, 10), kRed);
    gradient->setLocations({});
    gradient->setGeometryFlipped(true);
    render();
    EXPECT_GT(at(10, 18).red, 0.8);
}

TEST_F(LayerRendererTest, FlattenedLayersDrawNothingAndDisturbNoOthers) {
    add({{0, 0}, {20, 20}}, kRed)->setAffineTransform(CGAffineTransformMakeScale(0, 0));
    add({{0, 0}, {20, 20}}, kBlue)->setFrame({{NAN, 0}, {5, 5}});
    add({{5, 5}, {5, 5}}, kGreen);
    render();
    EXPECT_EQ(at(0, 0), kClear);
    EXPECT_EQ(at(6, 6), kGreen);
}

}  // namespace
}  // namespace zqcore::platform
