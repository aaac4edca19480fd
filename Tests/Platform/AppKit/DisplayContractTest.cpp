#include "Tests/Platform/AppKit/DisplayContract.h"

#include "Platform/AppKit/NSScreen.h"
#include "Platform/AppKit/NSTrackingArea.h"
#include "Platform/Foundation/AXIsProcessTrusted.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "TestKit/PlatformReports.h"

namespace zqcore {

using Words = std::vector<std::string>;

TEST_P(DisplayContract, HasAPrimaryScreenAtTheOrigin) {
    const auto screens = NSScreen::screens();
    ASSERT_FALSE(screens.empty());
    EXPECT_EQ(screens[0]->frame().origin, (CGPoint{0, 0}));
    EXPECT_GT(screens[0]->frame().size.width, 100);
    EXPECT_TRUE(CGRectContainsRect(screens[0]->frame(), screens[0]->visibleFrame()));
    EXPECT_GE(screens[0]->backingScaleFactor(), 1);
}

TEST_P(DisplayContract, TellsThePointerInScreenSpace) {
    for (const CGPoint place : {CGPoint{100, 120}, CGPoint{301, 47}}) {
        driver->movePointer(place);
        driver->settle();
        EXPECT_EQ(NSEvent::mouseLocation(), place);
    }
}

TEST_P(DisplayContract, PressesGoToTheFrontmostWindowThatTakesTheMouse) {
    const auto below = show(CGRectMake(100, 100, 200, 200));
    const auto front = show(CGRectMake(150, 150, 200, 200));
    const auto belowView = makeObject<HearingView>();
    const auto frontView = makeObject<HearingView>();
    below->setContentView(belowView);
    front->setContentView(frontView);
    driver->settle();
    driver->movePointer({200, 210});
    driver->pressButton();
    driver->releaseButton();
    driver->settle();
    EXPECT_EQ(frontView->take(), (Words{"down", "up"}));
    EXPECT_EQ(frontView->last, (CGPoint{50, 60}));
    EXPECT_EQ(belowView->take(), Words{});
    front->setIgnoresMouseEvents(true);
    driver->settle();
    driver->pressButton();
    driver->releaseButton();
    driver->settle();
    EXPECT_EQ(belowView->take(), (Words{"down", "up"})) << "through the one that ignores the mouse";
    front->setIgnoresMouseEvents(false);
    front->setLevel(NSFloatingWindowLevel - 1);
    driver->settle();
    driver->pressButton();
    driver->releaseButton();
    driver->settle();
    EXPECT_EQ(belowView->take(), (Words{"down", "up"})) << "a higher level is in front";
}

TEST_P(DisplayContract, APressHoldsItsViewUntilTheRelease) {
    window = show(CGRectMake(100, 100, 100, 100));
    const auto view = makeObject<HearingView>();
    window->setContentView(view);
    driver->settle();
    driver->movePointer({150, 150});
    driver->pressButton();
    driver->movePointer({300, 320});
    driver->releaseButton();
    driver->settle();
    const Words heard = view->take();
    ASSERT_GE(heard.size(), 3U);
    EXPECT_EQ(heard.front(), "down");
    EXPECT_EQ(heard[1], "drag");
    EXPECT_EQ(heard.back(), "up");
    EXPECT_EQ(view->last, (CGPoint{200, 220})) << "outside of the window";
}

TEST_P(DisplayContract, ForeignWindowsCoverOurs) {
    window = show(CGRectMake(100, 100, 100, 100), NSNormalWindowLevel);
    const auto view = makeObject<HearingView>();
    window->setContentView(view);
    driver->openForeignWindow(CGRectMake(140, 100, 200, 100));
    driver->settle();
    driver->movePointer({120, 150});
    driver->settle();
    EXPECT_EQ(driver->display()->windowAt({120, 150}), window->windowNumber());
    EXPECT_EQ(driver->display()->windowAt({160, 150}), 0);
    driver->movePointer({160, 150});
    driver->pressButton();
    driver->releaseButton();
    driver->settle();
    EXPECT_EQ(view->take(), Words{});
}

TEST_P(DisplayContract, MonitorsSeeEitherOurEventsOrThoseOfOthers) {
    window = show(CGRectMake(100, 100, 100, 100));
    int local = 0;
    int global = 0;
    const NSEventMask downs = NSEventMaskFromType(NSEventType::leftMouseDown);
    const auto a = NSEvent::addLocalMonitorForEventsMatchingMask(downs, [&](const auto& event) {
        ++local;
        return event;
    });
    const auto b =
        NSEvent::addGlobalMonitorForEventsMatchingMask(downs, [&](const std::shared_ptr<NSEvent>& event) {
            ++global;
            EXPECT_EQ(event->window(), nullptr);
            EXPECT_EQ(event->locationInWindow(), (CGPoint{300, 300})) << "in screen space";
        });
    driver->settle();
    const auto clickAt = [&](CGPoint place) {
        driver->movePointer(place);
        driver->pressButton();
        driver->releaseButton();
        driver->settle();
    };
    clickAt({150, 150});
    EXPECT_EQ(local, 1);
    EXPECT_EQ(global, 0);
    clickAt({300, 300});
    EXPECT_EQ(local, 1);
    EXPECT_EQ(global, 1);
    NSEvent::removeMonitor(a);
    NSEvent::removeMonitor(b);
    clickAt({150, 150});
    clickAt({300, 300});
    EXPECT_EQ(local + global, 2);
}

TEST_P(DisplayContract, TrackingFollowsThePointerIntoAndOutOfWindows) {
    window = show(CGRectMake(100, 100, 100, 100));
    const auto view = makeObject<HearingView>();
    window->setContentView(view);
    view->addTrackingArea(makeObject<NSTrackingArea>(CGRectMake(0, 0, 50, 100), 129U, view));
    driver->settle();
    driver->movePointer({110, 150});
    driver->settle();
    EXPECT_EQ(view->take(), (Words{"enter"}));
    driver->movePointer({120, 150});
    driver->settle();
    EXPECT_EQ(view->take(), Words{}) << "still inside";
    driver->movePointer({170, 150});
    driver->settle();
    EXPECT_EQ(view->take(), (Words{"exit"}));
    driver->movePointer({110, 150});
    driver->movePointer({20, 20});
    driver->settle();
    EXPECT_EQ(view->take(), (Words{"enter", "exit"})) << "out of the window altogether";
}

TEST_P(DisplayContract, TheWheelGoesToTheViewUnderThePointer) {
    window = show(CGRectMake(100, 100, 100, 100));
    const auto view = makeObject<HearingView>(CGRectMake(0, 0, 50, 100));
    window->contentView()->addSubview(view);
    driver->settle();
    driver->movePointer({120, 150});
    driver->scroll(1);
    driver->scroll(-1);
    driver->settle();
    EXPECT_EQ(view->take(), (Words{"wheel up", "wheel down"}));
    driver->movePointer({170, 150});
    driver->scroll(1);
    driver->settle();
    EXPECT_EQ(view->take(), Words{});
}

TEST_P(DisplayContract, WindowsHaveNumbersAndPlacesInTheList) {
    const auto first = makeObject<NSWindow>(CGRectMake(100, 100, 60, 60));
    EXPECT_LE(first->windowNumber(), 0) << "none before it is shown";
    first->setLevel(NSFloatingWindowLevel);
    first->orderFrontRegardless();
    const auto second = show(CGRectMake(120, 100, 60, 60));
    driver->settle();
    EXPECT_GT(first->windowNumber(), 0);
    EXPECT_NE(first->windowNumber(), second->windowNumber());
    const auto placeOf = [&](const NSWindow& one) {
        const auto list = driver->display()->windowList(true);
        for (std::size_t place = 0; place < list.size(); ++place) {
            if (list[place].number == one.windowNumber()) return static_cast<int>(place);
        }
        return -1;
    };
    EXPECT_LT(placeOf(*second), placeOf(*first)) << "front to back";
    first->orderFrontRegardless();
    driver->settle();
    EXPECT_LT(placeOf(*first), placeOf(*second));
    first->orderOut();
    driver->settle();
    EXPECT_EQ(placeOf(*first), -1);
    second->orderOut();
}

TEST_P(DisplayContract, CapturesWhatAWindowShows) {
    window = show(CGRectMake(100, 100, 40, 30));
    window->setBackgroundColor(nullptr);
    driver->settle();
    const auto picture = driver->display()->capture(window->frame(), {window->windowNumber()});
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->width, static_cast<int>(40 * picture->scale));
    EXPECT_EQ(picture->height, static_cast<int>(30 * picture->scale));
    const auto none = driver->display()->capture(CGRectMake(0, 0, 10, 10), {});
    ASSERT_TRUE(none);
    for (const std::uint32_t pixel : none->pixels) ASSERT_EQ(pixel, 0U);
}

TEST_P(DisplayContract, KeysOfOthersReachGlobalMonitorsOnlyUnderTrust) {
    Words heard;
    const auto keys = NSEventMaskFromType(NSEventType::keyDown) | NSEventMaskFromType(NSEventType::keyUp) |
                      NSEventMaskFromType(NSEventType::leftMouseDown);
    const auto token =
        NSEvent::addGlobalMonitorForEventsMatchingMask(keys, [&](const std::shared_ptr<NSEvent>& event) {
            heard.push_back(event->type() == NSEventType::leftMouseDown ? "press" : event->characters());
        });
    application->deactivate();
    driver->settle();
    const auto type = [&] {
        driver->pressKey(0);
        driver->releaseKey(0);
        driver->pressButton();
        driver->releaseButton();
        driver->settle();
        return std::exchange(heard, {});
    };
    EXPECT_EQ(type(), (Words{"a", "a", "press"}));
    setProcessTrusted(false);
    EXPECT_EQ(type(), (Words{"press"})) << "the pointer is nobody's secret";
    setProcessTrusted(true);
    EXPECT_EQ(type(), (Words{"a", "a", "press"})) << "asked at each key";
    NSEvent::removeMonitor(token);
}

TEST_P(DisplayContract, ADisplayThatGoesAwayIsToldOnceAndLeavesEverythingStandingStill) {
    window = show(CGRectMake(100, 100, 100, 100));
    int told = 0;
    const auto token = NSNotificationCenter::defaultCenter().addObserverForName(
        std::string(NSApplicationDisplayLostNotification), nullptr, [&](const NSNotification&) {
            ++told;
            EXPECT_FALSE(window->isVisible());
        });
    testkit::PlatformReports reports;
    driver->lose();
    EXPECT_EQ(told, 1);
    EXPECT_FALSE(window->isVisible());
    EXPECT_FALSE(window->isOnActiveSpace());
    EXPECT_EQ(application->keyWindow(), nullptr);
    EXPECT_TRUE(application->windows().empty());
    window->setFrame(CGRectMake(0, 0, 50, 50), true);
    window->orderFrontRegardless();
    EXPECT_FALSE(window->isVisible());
    EXPECT_LE(show(CGRectMake(0, 0, 10, 10))->windowNumber(), 0);
    window->close();
    driver->settle();
    const Words lines = reports.take();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_TRUE(lines[0].starts_with("The display is gone: ")) << lines[0];
    NSNotificationCenter::defaultCenter().removeObserver(token);
}

INSTANTIATE_TEST_SUITE_P(Headless, DisplayContract, testing::Values([] {
                             return std::unique_ptr<testkit::DisplayDriver>(
                                 std::make_unique<testkit::HeadlessDriver>());
                         }));

}  // namespace zqcore
