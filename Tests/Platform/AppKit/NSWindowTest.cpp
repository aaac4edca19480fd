#include <gtest/gtest.h>

#include "Platform/AppKit/NSWindow.h"

#include "Platform/AppKit/NSAnimationContext.h"
#include "Platform/AppKit/NSPanel.h"
#include "Platform/AppKit/NSScreen.h"
#include "Platform/AppKit/NSViewController.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Platform/Graphics/CGRect.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace zqcore {
namespace {

using Numbers = std::vector<DisplayWindowNumber>;

// The primary one, one above and to the left of it, and one to the right at scale 2.
const std::vector<DisplayScreen> kThreeScreens = {
    {CGRectMake(0, 0, 1000, 800), CGRectMake(0, 0, 1000, 776), 1},
    {CGRectMake(-600, 800, 600, 400), CGRectMake(-600, 800, 600, 400), 1},
    {CGRectMake(1000, 100, 500, 500), CGRectMake(1000, 140, 500, 436), 2},
};

class NSWindowTest : public testing::Test {
  protected:
    testkit::HeadlessApplication ui{kThreeScreens};

    static std::shared_ptr<NSWindow> make(int level = NSNormalWindowLevel,
                                          NSWindowStyleMask style = NSWindowStyleMaskTitled) {
        auto window = makeObject<NSWindow>(CGRectMake(100, 100, 100, 100), style);
        window->setLevel(level);
        return window;
    }
};

TEST_F(NSWindowTest, StaysBelowHigherLevelsAndComesBeforeItsOwn) {
    const auto a = make();
    const auto b = make();
    const auto tip = make(NSPopUpMenuWindowLevel + 10);
    for (const auto& window : {a, b, tip}) window->orderFront();
    const auto number = [](const auto& window) { return window->windowNumber(); };
    EXPECT_EQ(ui.display().stack(), (Numbers{number(a), number(b), number(tip)}));
    a->orderFront();
    EXPECT_EQ(ui.display().stack(), (Numbers{number(b), number(a), number(tip)}));
    a->orderWindow(NSWindowOrderingMode::below, number(b));
    EXPECT_EQ(ui.display().stack(), (Numbers{number(a), number(b), number(tip)}));
    b->orderBack();
    EXPECT_EQ(ui.display().stack(), (Numbers{number(b), number(a), number(tip)}));
    tip->setLevel(NSNormalWindowLevel);
    b->setLevel(NSFloatingWindowLevel);
    EXPECT_EQ(ui.display().stack(), (Numbers{number(a), number(tip), number(b)}));
    a->orderOut();
    EXPECT_EQ(ui.display().stack(), (Numbers{number(tip), number(b)}));
    EXPECT_EQ(ui.application().windows().size(), 2U);
}

TEST_F(NSWindowTest, OrderFrontStaysBehindAnotherApplicationsKeyWindow) {
    HeadlessDisplay::ForeignWindow other;
    other.frame = CGRectMake(0, 0, 500, 500);
    other.isKeyWindow = true;
    const auto foreign = ui.display().addForeignWindow(other);
    ui.display().setApplicationActive(false);
    const auto window = make();
    window->orderFront();
    EXPECT_EQ(ui.display().stack(), (Numbers{window->windowNumber(), foreign}));
    window->orderFrontRegardless();
    EXPECT_EQ(ui.display().stack(), (Numbers{foreign, window->windowNumber()}));
    EXPECT_FALSE(ui.application().isActive());
    EXPECT_EQ(ui.application().keyWindow(), nullptr);
}

TEST_F(NSWindowTest, CloseTellsEachTimeAndOrderOutNever) {
    const auto window = make();
    int closes = 0;
    auto& center = NSNotificationCenter::defaultCenter();
    const auto token = center.addObserverForName(std::string(NSWindowWillCloseNotification), window,
                                                 [&](const NSNotification& notice) {
                                                     ++closes;
                                                     EXPECT_EQ(notice.object(), window);
                                                     window->close();  // must not start anew
                                                 });
    window->close();
    window->orderFront();
    window->orderOut();
    EXPECT_EQ(closes, 1);
    window->orderFront();
    EXPECT_TRUE(window->isVisible());
    window->close();
    EXPECT_EQ(closes, 2);
    EXPECT_FALSE(window->isVisible());
    center.removeObserver(token);
}

TEST_F(NSWindowTest, TheApplicationHoldsVisibleWindowsOnly) {
    auto window = make();
    const std::weak_ptr<NSWindow> weak = window;
    window->makeKeyAndOrderFront();
    ui.turn();
    window.reset();
    ASSERT_FALSE(weak.expired());
    weak.lock()->close();
    EXPECT_TRUE(weak.expired());
    EXPECT_TRUE(ui.display().windowList(false).empty());
}

TEST_F(NSWindowTest, PanelsHideWithTheApplicationAndMayBeShownMeanwhile) {
    const auto panel = makeObject<NSPanel>(CGRectMake(0, 0, 10, 10));
    const auto window = make();
    panel->orderFront();
    window->orderFront();
    ui.display().setApplicationActive(false);
    EXPECT_FALSE(panel->isVisible());
    EXPECT_TRUE(window->isVisible());
    panel->orderFrontRegardless();
    EXPECT_TRUE(panel->isVisible());
    panel->orderOut();
    ui.display().setApplicationActive(true);
    EXPECT_FALSE(panel->isVisible()) << "code took it away meanwhile";
    ui.display().setApplicationActive(false);
    panel->orderFrontRegardless();
    ui.display().setApplicationActive(true);
    ui.display().setApplicationActive(false);
    ui.display().setApplicationActive(true);
    EXPECT_TRUE(panel->isVisible()) << "comes back with the application";
    ui.display().setApplicationActive(false);
    panel->close();
    ui.display().setApplicationActive(true);
    EXPECT_FALSE(panel->isVisible()) << "closed while it was hidden";
}

TEST_F(NSWindowTest, KnowsItsScreenAcrossAllOfThem) {
    struct Case {
        CGRect frame;
        int screen;  // -1 none
    };
    const std::vector<Case> cases = {
        {CGRectMake(10, 10, 100, 100), 0},    {CGRectMake(-200, 850, 100, 100), 1},
        {CGRectMake(960, 200, 100, 100), 2},  {CGRectMake(940, 200, 100, 100), 0},
        {CGRectMake(-100, 750, 200, 100), 0}, {CGRectMake(5000, 0, 10, 10), -1},
        {CGRectMake(1100, 300, 0, 0), 2},
    };
    const auto window = make();
    for (const Case& c : cases) {
        window->setFrame(c.frame, false);
        const auto screen = window->screen();
        ASSERT_EQ(screen != nullptr, c.screen >= 0) << NSStringFromRect(c.frame);
        if (screen) {
            EXPECT_EQ(screen->frame(), kThreeScreens[static_cast<std::size_t>(c.screen)].frame)
                << NSStringFromRect(c.frame);
        }
    }
    EXPECT_EQ(NSScreen::mainScreen()->frame(), kThreeScreens[0].frame) << "without a key window the primary";
    window->setFrame(CGRectMake(1100, 200, 50, 50), false);
    window->makeKeyAndOrderFront();
    EXPECT_EQ(NSScreen::mainScreen()->backingScaleFactor(), 2);
    EXPECT_EQ(NSScreen::mainScreen()->convertRectToBacking(CGRectMake(1, 2, 3, 4)), CGRectMake(2, 4, 6, 8));
}

TEST_F(NSWindowTest, SpacesDecideWhetherAWindowIsThere) {
    const auto window = make();
    const auto everywhere = make();
    everywhere->setCollectionBehavior(NSWindowCollectionBehaviorCanJoinAllSpaces);
    EXPECT_FALSE(window->isOnActiveSpace()) << "not shown yet";
    window->orderFront();
    everywhere->orderFront();
    ui.display().setActiveSpace(2);
    EXPECT_FALSE(window->isOnActiveSpace());
    EXPECT_TRUE(window->isVisible()) << "ordered in, though elsewhere";
    EXPECT_TRUE(everywhere->isOnActiveSpace());
    EXPECT_EQ(ui.display().stack(), (Numbers{everywhere->windowNumber()}));
}

TEST_F(NSWindowTest, FadesItsAlphaInStepsAndEndsExactly) {
    const auto window = make();
    window->orderFront();
    bool ended = false;
    NSAnimationContext::runAnimationGroup(
        [&](NSAnimationContext& context) {
            context.setDuration(0.3);
            window->animator().setAlphaValue(0);
        },
        [&] { ended = true; });
    EXPECT_EQ(window->alphaValue(), 1);
    ui.advance(0.15);
    EXPECT_LT(window->alphaValue(), 0.5);
    EXPECT_GT(window->alphaValue(), 0);
    EXPECT_FALSE(ended);
    ui.advance(0.15);
    EXPECT_EQ(window->alphaValue(), 0);
    EXPECT_TRUE(ended);
    EXPECT_EQ(ui.display().windowState(window->windowNumber()).alpha, 0);
    // Setting it directly ends a fade that runs.
    NSAnimationContext::runAnimationGroup([&](NSAnimationContext& context) {
        context.setDuration(1);
        window->animator().setAlphaValue(0.5);
    });
    ui.advance(0.2);
    window->setAlphaValue(1);
    ui.advance(2);
    EXPECT_EQ(window->alphaValue(), 1);
    // A group that ends once too often, or once too seldom.
    int ends = 0;
    NSAnimationContext::runAnimationGroup([](NSAnimationContext&) { NSAnimationContext::endGrouping(); },
                                          [&] { ++ends; });
    NSAnimationContext::runAnimationGroup([](NSAnimationContext&) { NSAnimationContext::beginGrouping(); },
                                          [&] { ++ends; });
    ui.advance(0.25);
    EXPECT_EQ(ends, 2);
    // A window that closes in the midst of a fade.
    NSAnimationContext::runAnimationGroup([&](NSAnimationContext& context) {
        context.setDuration(1);
        window->animator().setAlphaValue(0);
    });
    ui.advance(0.5);
    window->close();
    ui.advance(1);
    EXPECT_FALSE(window->isVisible());
}

TEST_F(NSWindowTest, TakesFramesAsGivenAndSizesItsContent) {
    const auto window = make();
    window->setFrame(CGRectMake(10.5, 20, 33.3, 40), false);
    EXPECT_EQ(window->frame(), CGRectMake(10.5, 20, 33.3, 40));
    EXPECT_EQ(window->contentView()->frame(), CGRectMake(0, 0, 33.3, 40));
    window->setFrameTopLeftPoint({100, 300});
    EXPECT_EQ(window->frame().origin, (CGPoint{100, 260}));
    class Fitting : public NSView {
      public:
        CGSize fittingSize() override { return {120, 45}; }
    };
    const auto controller = makeObject<NSViewController>();
    controller->setView(makeObject<Fitting>());
    window->setContentViewController(controller);
    EXPECT_EQ(window->frame().size, (CGSize{120, 45}));
    EXPECT_EQ(window->contentView(), controller->view());
    EXPECT_EQ(window->contentView()->nextResponder(), controller);
    EXPECT_EQ(controller->nextResponder(), window);
}

TEST_F(NSWindowTest, AContentViewLeavesItsWindowForAnotherPlace) {
    const auto from = make();
    const auto to = make();
    const auto view = from->contentView();
    to->setContentView(view);
    EXPECT_FALSE(from->contentView());
    EXPECT_EQ(view->window(), to);
    from->setContentView(makeObject<NSView>());
    EXPECT_EQ(view->window(), to);
    from->contentView()->addSubview(view);
    EXPECT_FALSE(to->contentView());
    EXPECT_EQ(view->window(), from);
    to->orderFront();
    from->orderFront();
    ui.turn();
    EXPECT_TRUE(to->isVisible()) << "with nothing in it";
}

TEST_F(NSWindowTest, KeyStateFollowsWindowsAndActivation) {
    const auto a = make();
    const auto b = make();
    const auto plain = make(NSNormalWindowLevel, NSWindowStyleMaskBorderless);
    a->makeKeyAndOrderFront();
    b->makeKeyAndOrderFront();
    plain->makeKeyAndOrderFront();
    EXPECT_TRUE(b->isKeyWindow()) << "borderless windows can't be key";
    b->orderOut();
    EXPECT_TRUE(a->isKeyWindow()) << "the next one takes over";
    ui.display().setApplicationActive(false);
    EXPECT_FALSE(a->isKeyWindow());
    ui.display().setApplicationActive(true);
    EXPECT_TRUE(a->isKeyWindow());
    EXPECT_EQ(ui.display().focusedWindow(), a->windowNumber());
}

}  // namespace
}  // namespace zqcore
