#include "Platform/QuartzCore/CATransaction.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "Platform/Base/NSLog.h"
#include "Platform/QuartzCore/CALayer.h"
#include "Platform/QuartzCore/CAMediaTimingFunction.h"
#include "Platform/QuartzCore/CAShapeLayer.h"
#include "TestKit/ManualClock.h"

namespace zqcore::platform {
namespace {

using namespace std::chrono_literals;

class CATransactionTest : public testing::Test {
  protected:
    CATransactionTest() {
        window_->addSublayer(layer_);
        window_->setTreeChangeHandler([this] { ++changes_; });
    }
    CGFloat shownX() const { return layer_->presentation().position.x; }

    testkit::ManualClock clock_;
    std::shared_ptr<CALayer> window_ = makeObject<CALayer>();
    std::shared_ptr<CALayer> layer_ = makeObject<CALayer>();
    int changes_ = 0;
};

TEST_F(CATransactionTest, AnInnerOneInheritsWhatItDoesNotSet) {
    const auto ease = CAMediaTimingFunction::functionWithName(kCAMediaTimingFunctionEaseIn);
    EXPECT_EQ(CATransaction::animationDuration(), 0.25);
    CATransaction::begin();
    CATransaction::setDisableActions(true);
    CATransaction::setAnimationTimingFunction(ease);
    CATransaction::begin();
    CATransaction::setAnimationDuration(0.4);
    EXPECT_TRUE(CATransaction::disableActions());
    EXPECT_EQ(CATransaction::animationTimingFunction(), ease);
    EXPECT_FALSE(CATransaction::animationTerms());
    CATransaction::setDisableActions(false);
    EXPECT_EQ(CATransaction::animationTerms()->duration, 0.4);
    CATransaction::commit();
    EXPECT_EQ(CATransaction::animationDuration(), 0.25);
    EXPECT_TRUE(CATransaction::disableActions());
    CATransaction::commit();
    CATransaction::commit();
    EXPECT_FALSE(CATransaction::disableActions());
}

TEST_F(CATransactionTest, OutsideOfAnySettingsLastUntilTheNextTurn) {
    CATransaction::setAnimationDuration(2);
    EXPECT_EQ(CATransaction::animationDuration(), 2);
    clock_.advance(0s);
    EXPECT_EQ(CATransaction::animationDuration(), 0.25);
}

TEST_F(CATransactionTest, AGroupEndsItsDurationAfterItBeganWhateverMoved) {
    std::vector<std::pair<char, Clock::Duration>> ends;
    const auto begin = clock_.now();
    for (const auto& [name, seconds] : {std::pair{'b', 0.3}, std::pair{'a', 0.0}, std::pair{'c', 0.4}}) {
        CATransaction::begin();
        CATransaction::setAnimationDuration(seconds);
        CATransaction::setCompletionBlock([&, name] { ends.emplace_back(name, clock_.now() - begin); });
        CATransaction::commit();
    }
    EXPECT_TRUE(ends.empty()) << "never inside the call";
    clock_.advance(1s);
    EXPECT_EQ(ends, (std::vector<std::pair<char, Clock::Duration>>{{'a', 0ms}, {'b', 300ms}, {'c', 400ms}}));
}

TEST_F(CATransactionTest, ACompletionThatThrowsCostsALine) {
    static std::vector<std::string> lines;
    setNSLogHandler([](std::string_view line) { lines.emplace_back(line); });
    CATransaction::begin();
    CATransaction::setCompletionBlock([] { throw std::runtime_error("no"); });
    CATransaction::commit();
    clock_.advance(1s);
    setNSLogHandler(nullptr);
    EXPECT_EQ(lines, (std::vector<std::string>{"animation completion threw: no"}));
}

TEST_F(CATransactionTest, TheModelChangesAtOnceAndWhatShowsRunsToIt) {
    CATransaction::begin();
    CATransaction::setAnimationDuration(1);
    CATransaction::setAnimationTimingFunction(
        CAMediaTimingFunction::functionWithName(kCAMediaTimingFunctionLinear));
    layer_->setPosition({100, 0});
    CATransaction::commit();
    EXPECT_EQ(layer_->position().x, 100);
    EXPECT_EQ(shownX(), 0);
    clock_.advance(250ms);
    EXPECT_DOUBLE_EQ(shownX(), 25);
    EXPECT_TRUE(window_->hasRunningAnimations());
    layer_->setPosition({75, 0});  // the default curve in 0.25 s, from what shows
    EXPECT_DOUBLE_EQ(shownX(), 25);
    clock_.advance(125ms);
    EXPECT_NEAR(shownX(), 25 + 50 * 0.802403, 1e-4);
    layer_->setPosition({75, 0});
    EXPECT_NEAR(shownX(), 25 + 50 * 0.802403, 1e-4) << "the same value again disturbs nothing";
    clock_.advance(125ms);
    EXPECT_EQ(shownX(), 75);
    EXPECT_FALSE(window_->hasRunningAnimations());
}

TEST_F(CATransactionTest, OnlyFreeLayersInAWindowMoveByThemselves) {
    const auto moves = [](CALayer& layer) {
        layer.setOpacity(layer.opacity() == 1 ? 0.5 : 1);
        return layer.hasRunningAnimations();
    };
    EXPECT_TRUE(moves(*layer_));
    clock_.advance(1s);
    const auto loose = makeObject<CALayer>();
    EXPECT_FALSE(moves(*loose)) << "nobody sees it";

    std::optional<CAAnimationTerms> terms;
    layer_->setActionPolicy([&](const CALayer&) { return terms; });
    EXPECT_FALSE(moves(*layer_)) << "a view's layer asks its policy";
    terms = CAAnimationTerms{0.3, nullptr};
    EXPECT_TRUE(moves(*layer_));
    clock_.advance(299ms);
    EXPECT_TRUE(layer_->hasRunningAnimations());
    clock_.advance(1ms);
    EXPECT_FALSE(layer_->hasRunningAnimations());
    CATransaction::begin();
    CATransaction::setDisableActions(true);
    EXPECT_FALSE(moves(*layer_));
    CATransaction::commit();
    EXPECT_TRUE(moves(*layer_));
    terms.reset();
    EXPECT_FALSE(moves(*layer_)) << "a silent change ends what runs";
    EXPECT_EQ(layer_->presentation().opacity, layer_->opacity());
}

TEST_F(CATransactionTest, SublayersResizeUnderTheTermsOfTheirSuperlayer) {
    layer_->setBounds({{0, 0}, {50, 30}});
    const auto inner = makeObject<CALayer>();
    inner->setFrame({{0, 0}, {50, 30}});
    inner->setAutoresizingMask(kCALayerWidthSizable | kCALayerHeightSizable);
    layer_->addSublayer(inner);
    clock_.advance(1s);
    CATransaction::begin();
    CATransaction::setDisableActions(true);
    layer_->setBounds({{0, 0}, {70, 30}});
    CATransaction::commit();
    EXPECT_EQ(inner->presentation().frame, (CGRect{{0, 0}, {70, 30}}));
    EXPECT_FALSE(layer_->hasRunningAnimations());
    layer_->setBounds({{0, 0}, {90, 30}});
    EXPECT_EQ(inner->presentation().frame, (CGRect{{0, 0}, {70, 30}}));
    EXPECT_EQ(inner->frame(), (CGRect{{0, 0}, {90, 30}}));
}

TEST_F(CATransactionTest, AWindowHearsOfTheFirstChangeAndCanAskWhetherToGoOn) {
    clock_.advance(1s);
    window_->markRendered();
    changes_ = 0;
    layer_->setHidden(true);
    layer_->setOpacity(0.3);
    EXPECT_EQ(changes_, 1);
    EXPECT_TRUE(window_->needsRender());
    window_->markRendered();
    EXPECT_FALSE(layer_->needsRender());
    EXPECT_TRUE(window_->hasRunningAnimations());
    layer_->removeFromSuperlayer();
    EXPECT_EQ(changes_, 2);
    EXPECT_FALSE(window_->hasRunningAnimations()) << "it left with the layer";
    layer_->setOpacity(0.4);
    EXPECT_EQ(changes_, 2);
    window_->markRendered();
    window_->addSublayer(layer_);
    EXPECT_EQ(changes_, 3);
}

TEST_F(CATransactionTest, AShapesStrokeRunsToo) {
    const auto ring = makeObject<CAShapeLayer>();
    window_->addSublayer(ring);
    ring->setStrokeEnd(0);
    EXPECT_EQ(ring->presentationStroke().end, 1);
    EXPECT_TRUE(window_->hasRunningAnimations());
    clock_.advance(125ms);
    EXPECT_NEAR(ring->presentationStroke().end, 1 - 0.802403, 1e-5);
    ring->removeAllAnimations();
    EXPECT_EQ(ring->presentationStroke().end, 0);
    EXPECT_FALSE(window_->hasRunningAnimations());
}

}  // namespace
}  // namespace zqcore::platform
