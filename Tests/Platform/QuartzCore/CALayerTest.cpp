#include "Platform/QuartzCore/CALayer.h"

#include <gtest/gtest.h>

#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGRect.h"

namespace zqcore::platform {
namespace {

/// A layer that holds on to its middle, whatever is written.
class CenteredLayer final : public CALayer {
  public:
    CGPoint anchorPoint() const override { return {0.5, 0.5}; }
};

TEST(CALayerGeometryTest, TheAnchorDecidesWhereFrameAndPositionMeet) {
    const auto layer = makeObject<CALayer>();
    layer->setFrame({{10, 20}, {40, 30}});
    EXPECT_EQ(layer->position(), (CGPoint{30, 35}));
    layer->setAnchorPoint({0, 0});
    EXPECT_EQ(layer->frame(), (CGRect{{30, 35}, {40, 30}})) << "the position stays, the frame moves";
    layer->setFrame({{10, 20}, {40, 30}});
    EXPECT_EQ(layer->position(), (CGPoint{10, 20}));
    layer->setAffineTransform(CGAffineTransformMakeScale(0.5, 0.5));
    EXPECT_EQ(layer->frame(), (CGRect{{10, 20}, {20, 15}})) << "shrinks to its corner";
    layer->setFrame({{0, 0}, {30, 30}});
    EXPECT_EQ(layer->bounds().size, (CGSize{60, 60}));
    EXPECT_EQ(layer->frame(), (CGRect{{0, 0}, {30, 30}}));

    const auto centered = makeObject<CenteredLayer>();
    centered->setAnchorPoint({0, 0});
    centered->setFrame({{10, 20}, {40, 30}});
    centered->setAffineTransform(CGAffineTransformMakeScale(0.5, 0.5));
    EXPECT_EQ(centered->position(), (CGPoint{30, 35}));
    EXPECT_EQ(centered->frame(), (CGRect{{20, 27.5}, {20, 15}})) << "shrinks to its middle";
}

TEST(CALayerGeometryTest, NegativeSizesAreKept) {
    const auto layer = makeObject<CALayer>();
    layer->setFrame({{1, 1}, {-2, -2}});
    EXPECT_EQ(layer->frame(), (CGRect{{1, 1}, {-2, -2}}));
    EXPECT_EQ(layer->bounds(), (CGRect{{0, 0}, {-2, -2}}));
}

TEST(CALayerGeometryTest, MasksGiveTheChangeToTheFlexibleParts) {
    struct Case {
        CAAutoresizingMask mask;
        CGRect frame;
    };
    const Case cases[] = {
        {0, {{10, 10}, {20, 20}}},
        {18, {{10, 10}, {70, 30}}},
        {16, {{10, 10}, {20, 30}}},
        {1, {{60, 10}, {20, 20}}},
        {4 | 8, {{10, 20}, {20, 20}}},
        {1 | 4, {{17.5 + 2.5 - 2.5, 10}, {20, 20}}},  // 10 and 30 free on the sides: a quarter of 30
    };
    for (const auto& [mask, frame] : cases) {
        const CGFloat width = mask == (1 | 4) ? 90 : 110;
        EXPECT_EQ(autoresizedFrame({{10, 10}, {20, 20}}, mask, {60, 60}, {width, 70}), frame)
            << "mask " << mask;
    }
    EXPECT_EQ(autoresizedFrame({{0, 0}, {0, 0}}, 1 | 2, {0, 0}, {10, 10}), (CGRect{{5, 0}, {5, 0}}));
}

TEST(CALayerTreeTest, KeepsOrderAndRefusesCircles) {
    const auto root = makeObject<CALayer>();
    const auto a = makeObject<CALayer>();
    const auto b = makeObject<CALayer>();
    root->addSublayer(a);
    root->insertSublayer(b, 0);
    EXPECT_EQ(root->sublayers(), (std::vector{b, a}));
    root->addSublayer(b);
    EXPECT_EQ(root->sublayers(), (std::vector{a, b})) << "it left its place first";
    root->insertSublayer(nullptr, 0);
    b->addSublayer(root);
    EXPECT_FALSE(root->superlayer());
    root->reorderSublayers({b, a});
    EXPECT_EQ(root->sublayers(), (std::vector{b, a}));
    root->reorderSublayers({a, a});
    EXPECT_EQ(root->sublayers(), (std::vector{b, a})) << "not the same layers";
    EXPECT_EQ(a->superlayer(), root);
    a->removeFromSuperlayer();
    EXPECT_FALSE(a->superlayer());
}

TEST(CALayerTreeTest, TurnsAreCountedUpToTheRoot) {
    const auto root = makeObject<CALayer>();
    const auto middle = makeObject<CALayer>();
    const auto leaf = makeObject<CALayer>();
    root->addSublayer(middle);
    middle->addSublayer(leaf);
    middle->setGeometryFlipped(true);
    EXPECT_FALSE(root->contentsAreFlipped());
    EXPECT_TRUE(leaf->contentsAreFlipped());
    leaf->setGeometryFlipped(true);
    EXPECT_FALSE(leaf->contentsAreFlipped());
}

TEST(CALayerDrawingTest, AHandlerDrawsOncePerRequest) {
    const auto layer = makeObject<CALayer>();
    layer->setFrame({{0, 0}, {4, 4}});
    int drawn = 0;
    layer->setDrawHandler([&](CGContext&) {
        if (++drawn == 1) layer->setNeedsDisplay();  // from inside: the next time
    });
    layer->displayIfNeeded();
    EXPECT_EQ(drawn, 1);
    EXPECT_TRUE(layer->needsDisplay());
    layer->displayIfNeeded();
    layer->displayIfNeeded();
    EXPECT_EQ(drawn, 2);
    layer->setDrawHandler({});
    EXPECT_FALSE(layer->needsDisplay());
}

}  // namespace
}  // namespace zqcore::platform
