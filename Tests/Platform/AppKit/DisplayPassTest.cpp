#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <random>

#include "Platform/AppKit/NSAnimationContext.h"
#include "Platform/AppKit/NSTrackingArea.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Dispatch/ClockDriver.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/RunLoop.h"
#include "Platform/Foundation/NSTimer.h"
#include "Platform/Graphics/CGAffineTransform.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGPath.h"
#include "Platform/Graphics/NSAppearance.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSGraphicsContext.h"
#include "Platform/QuartzCore/CALayer.h"
#include "Platform/QuartzCore/CAShapeLayer.h"
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

/// A tree of views of every look that reaches beyond its bounds or is cut at them, changed at random.
class ChangingTree {
  public:
    ChangingTree(NSWindow& window, unsigned seed) : random_(seed) {
        window.setFrame({{100, 100}, {120, 90}}, false);
        views_.push_back(window.contentView());
        for (int count = 0; count < 12; ++count) addView();
        const auto ring = makeObject<CAShapeLayer>();
        ring->setPath(CGPath::roundedRect({{-6, -4}, {20, 15}}, 4, 4));
        ring->setLineWidth(3);
        ring->setStrokeColor(CGColor::rgb(0, 0.5, 0));
        views_[2]->layer()->addSublayer(ring);
        ring_ = ring;
    }

    void change() {
        NSView& view = *views_[static_cast<std::size_t>(pick(1, static_cast<int>(views_.size()) - 1))];
        CALayer& layer = *view.layer();
        switch (pick(0, 13)) {
            case 0:
                return view.setFrame(rect());
            case 1:
                return view.setFrameOrigin({pick(-5, 90) / 2.0, pick(-5, 60) / 3.0});
            case 2:
                return layer.setBackgroundColor(color());
            case 3:
                return view.setAlphaValue(pick(0, 4) / 4.0);
            case 4:
                return view.setHidden(!view.isHidden());
            case 5:
                return layer.setCornerRadius(pick(0, 9));
            case 6:
                layer.setBorderColor(color());
                return layer.setBorderWidth(pick(0, 3) / 2.0);
            case 7:
                layer.setShadowColor(color());
                layer.setShadowRadius(pick(0, 5));
                layer.setShadowOffset({pick(-4, 4) * 1.0, pick(-4, 4) * 1.0});
                return layer.setShadowOpacity(pick(0, 2) / 2.0);
            case 8:
                return layer.setMasksToBounds(!layer.masksToBounds());
            case 9:
                return view.setBoundsOrigin({pick(-5, 5) * 1.0, pick(-5, 5) / 2.0});
            case 10:
                return view.setNeedsDisplay(true);
            case 11:
                layer.setAffineTransform(CGAffineTransformMakeRotation(pick(0, 3) / 3.0));
                return;
            case 12:
                return ring_->setStrokeEnd(pick(0, 4) / 4.0);  // free: it runs there by itself
            default:
                view.removeFromSuperview();
                std::erase_if(views_, [&](const auto& one) { return one->window() == nullptr; });
                while (views_.size() < 13) addView();
        }
    }

  private:
    class Painter : public NSView {
      public:
        Painter(const CGRect& frame, bool flipped) : NSView(frame), flipped_(flipped) {}
        [[nodiscard]] bool isFlipped() const override { return flipped_; }
        void drawRect(const CGRect& /*dirty*/) override {
            auto& context = *NSGraphicsContext::currentContext()->cgContext();
            context.setFillColor(CGColor::rgb(0, 0, ++times_ % 4 / 4.0));
            context.fill({{1, 1}, {7.5, 4.5}});
        }

      private:
        bool flipped_;
        int times_ = 0;
    };

    int pick(int low, int high) { return std::uniform_int_distribution(low, high)(random_); }
    CGColor color() { return {pick(0, 4) / 4.0, pick(0, 4) / 4.0, pick(0, 4) / 4.0, pick(1, 4) / 4.0}; }
    CGRect rect() {
        return {{pick(-10, 100) / 2.0, pick(-10, 80) / 2.0}, {pick(-1, 60) / 1.5, pick(-1, 50) / 2.0}};
    }
    void addView() {
        const auto parent = views_[static_cast<std::size_t>(pick(0, static_cast<int>(views_.size()) - 1))];
        views_.push_back(makeObject<Painter>(rect(), pick(0, 1) == 0));
        views_.back()->layer()->setBackgroundColor(color());
        parent->addSubview(views_.back());
    }

    std::mt19937 random_;
    std::vector<std::shared_ptr<NSView>> views_;
    std::shared_ptr<CAShapeLayer> ring_;
};

int greatestDifference(const DisplayPicture& a, const DisplayPicture& b) {
    int greatest = a.pixels.size() == b.pixels.size() ? 0 : 255;
    for (std::size_t at = 0; at < std::min(a.pixels.size(), b.pixels.size()); ++at) {
        for (const int shift : {0, 8, 16, 24}) {
            const auto channel = [&](const DisplayPicture& one) {
                return static_cast<int>(one.pixels[at] >> shift & 0xFF);
            };
            greatest = std::max(greatest, std::abs(channel(a) - channel(b)));
        }
    }
    return greatest;
}

TEST_F(DisplayPassTest, DrawingWhatChangedGivesThePictureOfDrawingAll) {
    int partial = 0;
    for (unsigned seed = 1; seed <= 12 && !HasFailure(); ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        ChangingTree tree(*window, seed);
        window->orderFront();
        for (int step = 0; step < 60 && !HasFailure(); ++step) {
            const int changes = 1 + step % 3;
            for (int change = 0; change < changes; ++change) tree.change();
            ui.advance(step % 4 == 0 ? 0.1 : 0);
            ui.turn();
            if (ui.display().changedPart(window->windowNumber())) ++partial;
            const auto drawn = ui.display().windowPicture(window->windowNumber());
            window->setBackgroundColor(window->backgroundColor());
            ui.turn();
            ASSERT_FALSE(ui.display().changedPart(window->windowNumber()));
            const auto whole = ui.display().windowPicture(window->windowNumber());
            // A curve that the border of the part cuts may differ by a shade in its soft edge.
            EXPECT_LE(greatestDifference(*drawn, *whole), 8) << "after step " << step;
        }
        window->orderOut();
        window->setContentView(makeObject<NSView>());
    }
    EXPECT_GT(partial, 400);
}

TEST_F(DisplayPassTest, ASmallChangePresentsItsPlaceAlone) {
    const auto view = makeObject<NSView>(CGRect{{2, 3}, {4, 4}});
    view->layer()->setBackgroundColor(CGColor::rgb(1, 0, 0));
    window->contentView()->addSubview(view);
    window->orderFront();
    ui.turn();
    EXPECT_FALSE(ui.display().changedPart(window->windowNumber()));
    view->layer()->setBackgroundColor(CGColor::rgb(0, 1, 0));
    ui.turn();
    // At scale 2 in a window of 20 pixels' height, with a pixel all round for soft edges.
    const auto part = ui.display().changedPart(window->windowNumber());
    ASSERT_TRUE(part);
    EXPECT_EQ((std::array{part->x, part->y, part->width, part->height}), (std::array{3, 5, 10, 10}));
    const int presents = ui.display().presentCount(window->windowNumber());
    view->setHidden(true);
    ui.turn();
    view->layer()->setBackgroundColor(CGColor::rgb(0, 0, 1));
    ui.turn();
    EXPECT_EQ(ui.display().presentCount(window->windowNumber()), presents + 1)
        << "what is hidden shows nothing";
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
