#include <gtest/gtest.h>

#include "Platform/AppKit/NSAnimationContext.h"
#include "Platform/AppKit/NSTrackingArea.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Dispatch/ClockDriver.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/RunLoop.h"
#include "Platform/Foundation/NSTimer.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/NSAppearance.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSGraphicsContext.h"
#include "Platform/QuartzCore/CALayer.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace zqcore {
namespace {

using Words = std::vector<std::string>;

class DisplayPassTest : public testing::Test {
  protected:
    testkit::HeadlessApplication ui{{{{{0, 0}, {500, 500}}, {{0, 0}, {500, 500}}, 2}}};
    std::shared_ptr<NSWindow> window = makeObject<NSWindow>(CGRect{{100, 100}, {20, 10}});

    [[nodiscard]] std::uint32_t pixel(int x, int y) const {
        const auto picture =
            const_cast<DisplayPassTest*>(this)->ui.display().windowPicture(window->windowNumber());
        return picture ? picture->pixel(x, y) : 0xDEADU;
    }
};

class LoggingView : public NSView {
  public:
    explicit LoggingView(Words& log) : log_(log) {}
    void updateConstraints() override { log_.push_back("constraints"); }
    void layout() override { log_.push_back("layout"); }
    void updateTrackingAreas() override { log_.push_back("tracking"); }
    void drawRect(const CGRect& /*dirty*/) override { log_.push_back("draw"); }

  private:
    Words& log_;
};

TEST_F(DisplayPassTest, ATurnRunsTimersThenTheQueueThenTheDisplayPass) {
    Words log;
    const auto view = makeObject<LoggingView>(log);
    window->setContentView(view);
    window->orderFront();
    ui.turn();
    EXPECT_EQ(log, (Words{"constraints", "layout", "tracking", "draw"}));
    log.clear();
    DispatchQueue::main()->async([&] {
        log.push_back("block");
        view->setNeedsDisplay(true);
        DispatchQueue::main()->async([&] { log.push_back("block of the next turn"); });
    });
    ui.turn();
    EXPECT_EQ(log, (Words{"block", "draw", "block of the next turn"}));
    log.clear();
    NSTimer::scheduledTimerWithTimeInterval(0.2, false, [&](NSTimer&) { log.push_back("later"); });
    NSTimer::scheduledTimerWithTimeInterval(0.1, false, [&](NSTimer&) {
        log.push_back("sooner");
        DispatchQueue::main()->async([&] { log.push_back("block"); });
    });
    ui.advance(1);
    EXPECT_EQ(log, (Words{"sooner", "block", "later"}));
}

TEST_F(DisplayPassTest, AnIdleWindowCostsNothing) {
    window->contentView()->addSubview(makeObject<NSView>(CGRect{{0, 0}, {5, 5}}));
    window->orderFront();
    ui.turn();
    const int presents = ui.display().presentCount(window->windowNumber());
    EXPECT_EQ(presents, 1);
    EXPECT_FALSE(RunLoop::main().drain()) << "no turn is asked for";
    EXPECT_FALSE(ClockDriver::timeToNext()) << "nothing comes due";
    ui.advance(3600);
    EXPECT_EQ(ui.display().presentCount(window->windowNumber()), presents);
    window->contentView()->setNeedsDisplay(true);
    EXPECT_TRUE(ui.application().turn());
    EXPECT_FALSE(ui.application().turn()) << "drawing asks for no second pass";
    EXPECT_EQ(ui.display().presentCount(window->windowNumber()), presents + 1);
}

// A view whose layer is brought up to date by itself keeps what was recorded before for a coarser screen.
TEST_F(DisplayPassTest, AFinerScreenDrawsOnceMoreAndNoMore) {
    class Changing : public NSView {
      public:
        [[nodiscard]] bool wantsUpdateLayer() const override { return updates; }
        void updateLayer() override { ++updated; }
        bool updates = false;
        int updated = 0;
    };
    const DisplayScreen whole{{{0, 0}, {500, 500}}, {{0, 0}, {500, 500}}, 1};
    ui.display().setScreens({whole});
    const auto view = makeObject<Changing>();
    window->setContentView(view);
    window->orderFront();
    ui.turn();
    view->updates = true;
    DisplayScreen finer = whole;
    finer.scale = 2;
    ui.display().setScreens({finer});
    // By single turns: a pass that asked for the next one for ever must fail here and not hang.
    for (int turns = 0; turns < 4; ++turns) ui.application().turn();
    EXPECT_EQ(view->updated, 1);
    window->setFrameOrigin({90, 90});
    for (int turns = 0; turns < 4; ++turns) ui.application().turn();
    EXPECT_EQ(view->updated, 1);
}

TEST_F(DisplayPassTest, DrawsCrispAtTheScaleOfTheScreenWithYUpwards) {
    class Painter : public NSView {
      public:
        using NSView::NSView;
        void drawRect(const CGRect& /*dirty*/) override {
            auto& context = *NSGraphicsContext::currentContext()->cgContext();
            context.setFillColor(CGColor::rgb(1, 0, 0));
            context.fill({{0, 0}, {0.5, 0.5}});  // one pixel in the lower left corner
        }
    };
    window->setBackgroundColor(NSColor::whiteColor());
    window->contentView()->addSubview(makeObject<Painter>(CGRect{{2, 3}, {4, 4}}));
    window->orderFront();
    ui.turn();
    EXPECT_EQ(pixel(0, 0), 0xFFFFFFFFU);
    // Lower left corner (2, 3) of a window 10 high is pixel (4, 13) from the top at scale 2.
    EXPECT_EQ(pixel(4, 13), 0xFFFF0000U);
    EXPECT_EQ(pixel(5, 13), 0xFFFFFFFFU);
    EXPECT_EQ(pixel(4, 12), 0xFFFFFFFFU);
}

TEST_F(DisplayPassTest, ResolvesDynamicColoursByTheAppearance) {
    class Painter : public NSView {
      public:
        using NSView::NSView;
        void drawRect(const CGRect& /*dirty*/) override {
            auto& context = *NSGraphicsContext::currentContext()->cgContext();
            context.setFillColor(NSAppearance::currentDrawingAppearance()->isDark() ? CGColor::white(0)
                                                                                    : CGColor::white(1));
            context.fill(bounds());
        }
    };
    window->setContentView(makeObject<Painter>());
    window->orderFront();
    ui.turn();
    EXPECT_EQ(pixel(3, 3), 0xFFFFFFFFU);
    Words names;
    const auto subscription = ui.application().observeEffectiveAppearance(
        [&](const std::shared_ptr<const NSAppearance>& appearance) { names.push_back(appearance->name()); });
    ui.display().setAppearance(DisplayAppearance::dark);
    ui.turn();
    EXPECT_EQ(names, (Words{"NSAppearanceNameAqua", "NSAppearanceNameDarkAqua"}));
    EXPECT_EQ(pixel(3, 3), 0xFF000000U);
    ui.application().setAppearance(NSAppearance::aqua());
    ui.turn();
    EXPECT_EQ(pixel(3, 3), 0xFFFFFFFFU) << "the one set wins";

    window->orderOut();
    ui.application().setAppearance(NSAppearance::darkAqua());
    window->orderFront();
    ui.turn();
    EXPECT_EQ(pixel(3, 3), 0xFF000000U) << "it changed while the window was hidden";
    const auto box = makeObject<NSView>(CGRect{{0, 0}, {20, 10}});
    box->addSubview(makeObject<Painter>(CGRect{{0, 0}, {20, 10}}));
    window->setContentView(makeObject<NSView>());
    window->contentView()->addSubview(box);
    ui.turn();
    EXPECT_EQ(pixel(3, 3), 0xFF000000U);
    box->removeFromSuperview();
    ui.application().setAppearance(NSAppearance::aqua());
    ui.turn();
    window->contentView()->addSubview(box);
    ui.turn();
    EXPECT_EQ(pixel(3, 3), 0xFFFFFFFFU) << "it changed while the view was out of the window";
}

TEST_F(DisplayPassTest, AnimatesBackingLayersOnlyWhereAGroupAllowsAndStopsThen) {
    const auto view = makeObject<NSView>(CGRect{{0, 0}, {5, 5}});
    window->contentView()->addSubview(view);
    window->orderFront();
    ui.turn();
    view->setFrameOrigin({10, 0});
    EXPECT_EQ(view->layer()->presentation().position.x, 10) << "silently";
    double endedAt = -1;
    const auto start = Clock::current().now();
    NSAnimationContext::runAnimationGroup(
        [&](NSAnimationContext& context) {
            context.setDuration(0.5);
            context.setAllowsImplicitAnimation(true);
            view->setFrameOrigin({0, 0});
        },
        [&] { endedAt = std::chrono::duration<double>(Clock::current().now() - start).count(); });
    EXPECT_EQ(view->frame().origin.x, 0) << "the model at once";
    ui.advance(0.25);
    const double half = view->layer()->presentation().position.x;
    EXPECT_GT(half, 0);
    EXPECT_LT(half, 5) << "the default curve is past the middle";
    const int before = ui.display().presentCount(window->windowNumber());
    EXPECT_GT(before, 10);
    ui.advance(0.25);
    EXPECT_EQ(endedAt, 0.5);
    EXPECT_EQ(view->layer()->presentation().position.x, 0);
    ui.advance(0.1);
    const int after = ui.display().presentCount(window->windowNumber());
    ui.advance(10);
    EXPECT_EQ(ui.display().presentCount(window->windowNumber()), after) << "no frames once it stands";
    EXPECT_FALSE(ClockDriver::timeToNext());
}

TEST_F(DisplayPassTest, SubviewLayersFollowTheOrderOfTheViews) {
    const auto content = window->contentView();
    const auto a = makeObject<NSView>();
    const auto b = makeObject<NSView>();
    const auto c = makeObject<NSView>();
    const auto own = makeObject<CALayer>();
    content->layer()->addSublayer(own);
    content->addSubview(b);
    content->addSubview(a, NSWindowOrderingMode::below, nullptr);
    content->addSubview(c, NSWindowOrderingMode::above, a);
    const auto layers = [&] { return content->layer()->sublayers(); };
    EXPECT_EQ(layers(), (std::vector{own, a->layer(), c->layer(), b->layer()}));
    content->sortSubviewsUsingFunction([&](NSView& x, NSView& y) {
        return &y == a.get() ? NSOrderedAscending : &x == a.get() ? NSOrderedDescending : NSOrderedSame;
    });
    EXPECT_EQ(layers(), (std::vector{own, c->layer(), b->layer(), a->layer()}));
    c->removeFromSuperview();
    EXPECT_EQ(layers(), (std::vector{own, b->layer(), a->layer()}));
}

}  // namespace
}  // namespace zqcore
