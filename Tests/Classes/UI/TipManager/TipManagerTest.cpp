#include "Classes/UI/TipManager/TipManager.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Classes/UI/TipManager/TipPlacement.h"
#include "Classes/UI/TipManager/TipWindow.h"
#include "Platform/AppKit/NSScreen.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Base/NSLog.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Platform/Graphics/CGRect.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace zqcore {
namespace {

using namespace std::chrono_literals;

constexpr CGRect kPrimary{{0, 0}, {1440, 900}};
constexpr CGRect kPrimaryVisible{{0, 0}, {1440, 876}};
// Above and left of the primary one, at two pixels a point.
constexpr CGRect kSecond{{-1000, 900}, {1000, 800}};

class TipManagerTest : public testing::Test {
  protected:
    TipManagerTest() {
        window->orderFront();
        first = addView(CGRectMake(50, 60, 40, 20));
        second = addView(CGRectMake(200, 60, 40, 20));
        // Long after whatever tip another test of this process closed.
        ui.advance(3600.0 * static_cast<double>(++testsSoFar));
        pointAt(first);
    }
    ~TipManagerTest() override {
        TipManager::close();
        TipManager::setDisplayStrategy(TipDisplayStrategy::immediately);
    }

    std::shared_ptr<NSView> addView(const CGRect& frame) {
        auto view = makeObject<NSView>(frame);
        window->contentView()->addSubview(view);
        return view;
    }
    static CGRect onScreen(const std::shared_ptr<NSView>& view) {
        return view->window()->convertRectToScreen(view->convertRectToView(view->bounds(), nullptr));
    }
    void pointAt(const std::shared_ptr<NSView>& view) {
        const CGRect frame = onScreen(view);
        ui.display().movePointer({CGRectGetMidX(frame), CGRectGetMidY(frame)});
    }
    static std::shared_ptr<TipInfo> tip(const std::string& text = "Translate",
                                        std::optional<TipDisplayStrategy> strategy = std::nullopt) {
        auto info = TipInfo::make();
        info->text = text;
        info->displayStrategy = strategy;
        return info;
    }
    static std::shared_ptr<TipInfo> delayed(const std::string& text = "Later") {
        return tip(text, TipDisplayStrategy::delay);
    }
    std::shared_ptr<TipWindow> tipWindow() {
        const auto number = TipManager::windowNumber();
        if (!number) return nullptr;
        return std::dynamic_pointer_cast<TipWindow>(ui.application().windowWithWindowNumber(*number));
    }
    bool shown() {
        const auto window_ = tipWindow();
        return window_ && window_->isVisible();
    }

    testkit::HeadlessApplication ui{{{kPrimary, kPrimaryVisible, 1}, {kSecond, kSecond, 2}}};
    std::shared_ptr<NSWindow> window =
        makeObject<NSWindow>(CGRectMake(100, 200, 400, 300), NSWindowStyleMaskTitled);
    std::shared_ptr<NSView> first;
    std::shared_ptr<NSView> second;
    static int testsSoFar;
};
int TipManagerTest::testsSoFar = 0;

// What one of these does to a tip that waits, and to one that is shown.
struct Step {
    const char* what;
    std::function<void(testkit::HeadlessApplication&)> act;
    bool endsWaiting, endsShown;
};
const Step kSteps[] = {
    {"left button on ours",
     [](auto& ui) {
         ui.display().click({170, 270});
     },
     true, true},
    {"right button on ours",
     [](auto& ui) {
         ui.display().click({170, 270}, 1);
     },
     true, true},
    {"other button on ours",
     [](auto& ui) {
         ui.display().click({170, 270}, 2);
     },
     true, true},
    {"left button elsewhere",
     [](auto& ui) {
         ui.display().click({1000, 700});
     },
     true, true},
    {"right button elsewhere",
     [](auto& ui) {
         ui.display().click({1000, 700}, 1);
     },
     true, true},
    {"key", [](auto& ui) { ui.display().pressKey(0, "a"); }, true, true},
    {"key going up", [](auto& ui) { ui.display().releaseKey(0, "a"); }, false, false},
    {"pointer inside the view",
     [](auto& ui) {
         ui.display().movePointer({160, 265});
     },
     false, false},
    {"wheel over the view", [](auto& ui) { ui.display().scroll(0, -3); }, false, false},
};

TEST_F(TipManagerTest, ShowsAtOnceOrAfterARestOfOneSecond) {
    TipManager::showTip(first, tip());
    EXPECT_TRUE(shown());
    TipManager::close();
    EXPECT_FALSE(TipManager::windowNumber());
    ui.advance(1);

    TipManager::showTip(first, delayed());
    EXPECT_FALSE(TipManager::windowNumber());
    ui.advance(0.999);
    EXPECT_FALSE(shown());
    ui.advance(0.001);
    EXPECT_TRUE(shown());
    TipManager::close();
    ui.advance(1);

    TipManager::setDisplayStrategy(TipDisplayStrategy::delay);
    TipManager::showTip(first, tip());
    EXPECT_FALSE(shown()) << "a tip that says nothing follows the manager";
    TipManager::showTip(first, tip("Now", TipDisplayStrategy::immediately));
    EXPECT_TRUE(shown());
    ui.advance(5);
    EXPECT_TRUE(shown()) << "the dropped one doesn't come back";
}

TEST_F(TipManagerTest, WithinASecondAfterATipTheNextOneComesWithoutAWait) {
    TipManager::showTip(first, tip());
    TipManager::showTip(second, delayed());
    EXPECT_FALSE(shown()) << "one is up, so no wait; but the pointer isn't there";
    TipManager::showTip(first, delayed());
    EXPECT_TRUE(shown()) << "the last went just now";

    for (const auto& [wait, comes] : {std::pair{0.999, true}, {1.0, false}}) {
        TipManager::close();
        ui.advance(wait);
        TipManager::showTip(first, delayed());
        EXPECT_EQ(shown(), comes) << wait;
    }
    TipManager::close();
    EXPECT_FALSE(TipManager::windowNumber());
    TipManager::showTip(first, delayed());
    EXPECT_FALSE(shown()) << "closing what only waited doesn't count";
}

TEST_F(TipManagerTest, EventsEndATipThatWaits) {
    for (const auto& [what, act, ends, unused] : kSteps) {
        ui.application().activate();
        window->makeKeyAndOrderFront();
        ui.advance(10);
        pointAt(first);
        int closed = 0;
        TipManager::showTip(first, delayed(), [&] { ++closed; });
        ui.advance(0.5);
        act(ui);
        pointAt(first);
        ui.advance(0.5);
        EXPECT_EQ(shown(), !ends) << what;
        EXPECT_EQ(closed, 0) << what;
        TipManager::close();
    }
}

TEST_F(TipManagerTest, EventsEndATipThatIsShown) {
    for (const auto& [what, act, unused, ends] : kSteps) {
        ui.application().activate();
        window->makeKeyAndOrderFront();
        pointAt(first);
        int closed = 0;
        TipManager::showTip(first, tip(), [&] { ++closed; });
        ASSERT_TRUE(shown()) << what;
        act(ui);
        EXPECT_EQ(TipManager::windowNumber().has_value(), !ends) << what;
        EXPECT_EQ(closed, ends ? 1 : 0) << what;
        TipManager::close();
        EXPECT_EQ(closed, 1) << what;
    }
}

TEST_F(TipManagerTest, ThePointerMayLeaveWhileItWaitsButMustBeBack) {
    TipManager::showTip(first, delayed());
    ui.display().movePointer({5, 5});
    ui.advance(0.9);
    pointAt(first);
    ui.advance(0.1);
    EXPECT_TRUE(shown());
    ui.display().movePointer({5, 5});
    EXPECT_FALSE(TipManager::windowNumber()) << "shown, it goes as the pointer leaves";

    ui.advance(1);
    TipManager::showTip(first, delayed());
    ui.advance(1);
    EXPECT_FALSE(shown());
}

TEST_F(TipManagerTest, ANewTipReplacesTheOneThatWaitsAndTheOneThatIsShown) {
    TipManager::showTip(second, delayed());
    ui.advance(0.5);
    TipManager::showTip(first, delayed("Translate"));
    ui.advance(0.5);
    EXPECT_FALSE(shown()) << "the wait begins anew";
    ui.advance(0.5);
    ASSERT_TRUE(shown());

    const auto held = tipWindow();
    const auto number = TipManager::windowNumber();
    const CGRect before = held->frame();
    pointAt(second);
    ASSERT_FALSE(TipManager::windowNumber()) << "the pointer left the first";
    pointAt(first);
    TipManager::showTip(first, tip());
    const auto again = tipWindow();
    EXPECT_NE(again, held) << "a new window after a close";
    TipManager::showTip(first, tip("Another, longer text"));
    EXPECT_EQ(tipWindow(), again) << "the same window while it stays open";
    EXPECT_GT(again->frame().size.width, before.size.width);
    EXPECT_NE(TipManager::windowNumber(), number);
    TipManager::showTip(first, tip());
    EXPECT_EQ(again->frame(), before) << "and it shrinks again";
    EXPECT_EQ(again->tipViewController()->tipView()->frame(),
              CGRectMake(10, 10, before.size.width - 20, before.size.height - 20));
}

TEST_F(TipManagerTest, ClosingIsForAViewOrForAny) {
    TipManager::showTip(first, tip());
    TipManager::close(second);
    EXPECT_TRUE(shown());
    TipManager::close(first);
    EXPECT_FALSE(TipManager::windowNumber());

    ui.advance(1);
    for (const auto& [whose, ends] :
         {std::pair{first, true}, {second, false}, {std::shared_ptr<NSView>(), true}}) {
        TipManager::showTip(first, delayed());
        TipManager::close(whose);
        ui.advance(1);
        EXPECT_EQ(shown(), !ends);
        TipManager::close();
        ui.advance(1);
    }
}

TEST_F(TipManagerTest, CallbacksRunOnceWhenTheirTipGoes) {
    std::string log;
    const auto note = [&](const char* what) { return [&log, what] { log += what; }; };
    TipManager::showTip(first, tip(), note("a"));
    TipManager::showTip(first, tip(), note("b"));
    EXPECT_EQ(log, "") << "the same view's own next tip takes the place silently";
    TipManager::close();
    EXPECT_EQ(log, "b");
    TipManager::close();
    EXPECT_EQ(log, "b");

    log.clear();
    const auto over = addView(first->frame());
    TipManager::showTip(first, tip(), note("a"));
    TipManager::showTip(over, tip(), note("b"));
    EXPECT_EQ(log, "a") << "another view's tip takes the place";
    TipManager::showTip(second, tip(), note("c"));
    EXPECT_EQ(log, "ab") << "refused: what was shown goes, the new callback is never kept";
    EXPECT_FALSE(TipManager::windowNumber());

    log.clear();
    TipManager::showTip(first, tip(""), note("d"));
    EXPECT_EQ(log, "d") << "without text it goes as soon as it came";
    EXPECT_FALSE(TipManager::windowNumber());
    TipManager::showTip(first, TipInfo::make(), {});
    EXPECT_FALSE(TipManager::windowNumber());

    log.clear();
    TipManager::showTip(first, tip(), [&] {
        log += "e";
        TipManager::close();
        TipManager::showTip(first, tip(), note("f"));
    });
    TipManager::close();
    EXPECT_EQ(log, "e");
    EXPECT_TRUE(shown()) << "a callback may ask for the next one";
    TipManager::close();
    EXPECT_EQ(log, "ef");
}

TEST_F(TipManagerTest, GoesWithItsViewOrItsWindow) {
    int closed = 0;
    TipManager::showTip(first, tip(), [&] { ++closed; });
    first->removeFromSuperview();
    EXPECT_TRUE(shown());
    first.reset();
    EXPECT_FALSE(TipManager::windowNumber());
    EXPECT_EQ(closed, 1);

    pointAt(second);
    TipManager::showTip(second, tip(), [&] { ++closed; });
    ASSERT_TRUE(shown());
    window->close();
    EXPECT_FALSE(TipManager::windowNumber());
    EXPECT_EQ(closed, 2);

    window->orderFront();
    ui.advance(1);
    TipManager::showTip(second, delayed(), [&] { ++closed; });
    second->removeFromSuperview();
    second.reset();
    ui.advance(1);
    EXPECT_FALSE(TipManager::windowNumber()) << "a view that goes while it waits ends silently";
    EXPECT_EQ(closed, 2);
}

TEST_F(TipManagerTest, MayBeClosedByWhoHearsOfItsWindow) {
    auto& center = NSNotificationCenter::defaultCenter();
    const auto token = center.addObserverForName(std::string(NSWindowDidMoveNotification), nullptr,
                                                 [](const NSNotification&) { TipManager::close(); });
    TipManager::showTip(first, tip());
    center.removeObserver(token);
    EXPECT_FALSE(TipManager::windowNumber());
    EXPECT_EQ(ui.application().windows(), (std::vector{window})) << "nor is one left that nobody closes";
}

TEST_F(TipManagerTest, ACallbackThatThrowsHarmsNobody) {
    static std::vector<std::string> lines;
    setNSLogHandler([](std::string_view line) { lines.emplace_back(line); });
    const auto fail = [] { throw std::runtime_error("no"); };
    TipManager::showTip(first, tip(), fail);
    DispatchQueue::global()->async([] { TipManager::close(); });
    ui.turn();
    EXPECT_FALSE(TipManager::windowNumber());
    TipManager::showTip(first, tip(), fail);
    ASSERT_TRUE(shown());
    first->removeFromSuperview();
    first.reset();
    setNSLogHandler(nullptr);
    EXPECT_FALSE(TipManager::windowNumber()) << "called while the view goes";
    EXPECT_EQ(lines, std::vector<std::string>(2, "close callback of a tip threw: no"));
}

TEST_F(TipManagerTest, ShowsOnlyForAViewThatIsWhollyThere) {
    const auto refuses = [&](const std::shared_ptr<NSView>& view, const char* why) {
        TipManager::showTip(view, tip());
        EXPECT_FALSE(TipManager::windowNumber()) << why;
    };
    const auto loose = makeObject<NSView>(CGRectMake(0, 0, 40, 20));
    refuses(loose, "no window");
    window->orderOut();
    refuses(first, "a window that isn't visible");
    window->orderFront();
    ui.display().setActiveSpace(2);
    refuses(first, "another space");
    ui.display().setActiveSpace(1);

    window->setFrame(CGRectMake(-70, 200, 400, 300), true);
    ui.display().movePointer({5, 270});
    refuses(first, "partly off the screen");
    window->setFrame(CGRectMake(-50, 200, 400, 300), true);
    TipManager::showTip(first, tip());
    EXPECT_TRUE(shown()) << "the screen's edge is inside";
    window->setFrame(CGRectMake(-70, 200, 400, 300), true);
    EXPECT_TRUE(shown());
    TipManager::closeIfNeed();
    EXPECT_FALSE(TipManager::windowNumber());
    TipManager::closeIfNeed();

    window->setFrame(CGRectMake(100, 200, 400, 300), true);
    ui.display().movePointer({150, 260});
    TipManager::showTip(first, tip());
    EXPECT_TRUE(shown()) << "the lower left corner belongs to the view";
    ui.display().movePointer({190, 280});
    EXPECT_FALSE(TipManager::windowNumber()) << "the upper right one doesn't";
}

TEST_F(TipManagerTest, ItsWindowFloatsAndTakesNothing) {
    window->makeKeyAndOrderFront();
    TipManager::showTip(first, tip());
    const auto tips = tipWindow();
    ASSERT_TRUE(tips);
    EXPECT_TRUE(window->isKeyWindow());
    EXPECT_FALSE(tips->canBecomeKey() || tips->canBecomeMain() || tips->hasShadow() || tips->isOpaque() ||
                 tips->isReleasedWhenClosed());
    EXPECT_TRUE(tips->ignoresMouseEvents());
    EXPECT_EQ(tips->level(), 111);
    EXPECT_EQ(tips->collectionBehavior(), 262233U);
    EXPECT_EQ(tips->styleMask(), 128U);
    EXPECT_EQ(tips->animationBehavior(), NSWindowAnimationBehavior::none);

    ui.display().setApplicationActive(false);
    pointAt(first);
    TipManager::showTip(first, tip());
    EXPECT_TRUE(shown()) << "also while another application is active";
    EXPECT_FALSE(ui.application().isActive());
}

TEST_F(TipManagerTest, SitsBesideItsViewOnItsScreen) {
    struct Case {
        const char* what;
        TipLocation location;
        CGPoint windowOrigin;
        CGRect visible;
    };
    const Case cases[] = {
        {"above", TipLocation::top, {100, 200}, kPrimaryVisible},
        {"beside", TipLocation::right, {100, 200}, kPrimaryVisible},
        {"under the menu bar it goes below", TipLocation::top, {100, 800}, kPrimaryVisible},
        {"at the left edge it goes right", TipLocation::left, {-50, 200}, kPrimaryVisible},
        {"on the second screen", TipLocation::bottom, {-900, 1200}, kSecond},
        {"at the second screen's right edge", TipLocation::top, {-90, 1200}, kSecond},
        {"at the second screen's top", TipLocation::top, {-900, 1600}, kSecond},
    };
    for (const auto& [what, location, origin, visible] : cases) {
        window->setFrame({origin, {400, 300}}, true);
        pointAt(first);
        const auto info = tip();
        info->location = location;
        TipManager::showTip(first, info);
        const auto tips = tipWindow();
        ASSERT_TRUE(tips) << what;
        const auto card = tips->tipViewController()->tipView()->fittingSize();
        const CGSize size{card.width + 20, card.height + 20};
        const CGRect frame = tip_placement::fixedWindowFrame(onScreen(first), size, *info, visible);
        EXPECT_EQ(tips->frame(), frame) << what << NSStringFromRect(tips->frame());
        EXPECT_EQ(tips->backingScaleFactor(), visible == kSecond ? 2 : 1) << what;
        EXPECT_EQ(card.height, 38) << "one line of 20 between two spaces of 9";
        TipManager::close();
    }
}

TEST_F(TipManagerTest, FromAnotherThreadItActsOnTheMainOne) {
    DispatchQueue::global()->async([&] { TipManager::showTip(first, tip()); });
    EXPECT_FALSE(TipManager::windowNumber());
    ui.turn();
    EXPECT_TRUE(shown());
    DispatchQueue::global()->async([&] { TipManager::close(first); });
    ui.turn();
    EXPECT_FALSE(TipManager::windowNumber());
}

}  // namespace
}  // namespace zqcore
