#include <gtest/gtest.h>

#include <stdexcept>

#include "Platform/AppKit/NSButton.h"
#include "Platform/AppKit/NSPanel.h"
#include "Platform/AppKit/NSTextField.h"
#include "Platform/AppKit/NSTrackingArea.h"
#include "Platform/Foundation/NSTimer.h"
#include "TestKit/PlatformReports.h"
#include "TestKit/UI/HeadlessApplication.h"
#include "Tests/Platform/AppKit/DisplayContract.h"

namespace zqcore {
namespace {

using Words = std::vector<std::string>;
constexpr NSTrackingAreaOptions kEnterAlways = NSTrackingMouseEnteredAndExited | NSTrackingActiveAlways;

class InputTest : public testing::Test {
  protected:
    testkit::HeadlessApplication ui;
    std::shared_ptr<NSWindow> window =
        makeObject<NSWindow>(CGRectMake(100, 100, 200, 200), NSWindowStyleMaskTitled);
    std::shared_ptr<NSView> content = window->contentView();

    void SetUp() override {
        window->makeKeyAndOrderFront();
        ui.turn();
    }
    template <class View = HearingView>
    std::shared_ptr<View> add(const CGRect& frame) {
        auto view = makeObject<View>(frame);
        content->addSubview(view);
        ui.turn();
        return view;
    }
};

class Counter : public NSObject {
  public:
    void count() { ++calls; }
    int calls = 0;
};
constexpr auto kCount = Selector::of<&Counter::count>("count");

TEST_F(InputTest, AnAreaAddedUnderTheRestingPointerGivesTheExitFirst) {
    const auto view = add(CGRectMake(0, 0, 100, 100));
    ui.display().movePointer({150, 150});
    const auto area = makeObject<NSTrackingArea>(CGRectMake(0, 0, 100, 100), kEnterAlways, view);
    view->addTrackingArea(area);
    ui.display().movePointer({151, 150});
    EXPECT_EQ(view->take(), Words{}) << "no entered for being there already";
    // Removed and added again, as each geometry change does.
    view->removeTrackingArea(area);
    view->addTrackingArea(makeObject<NSTrackingArea>(CGRectMake(0, 0, 100, 100), kEnterAlways, view));
    ui.display().movePointer({152, 150});
    EXPECT_EQ(view->take(), Words{});
    ui.display().movePointer({250, 150});
    EXPECT_EQ(view->take(), (Words{"exit"}));
}

TEST_F(InputTest, ParentAndChildAreBothEnteredAndAWindowOnTopBlocks) {
    const auto parent = add(CGRectMake(0, 0, 150, 150));
    const auto child = makeObject<HearingView>(CGRectMake(50, 50, 50, 50));
    parent->addSubview(child);
    for (const auto& view : {parent, child})
        view->addTrackingArea(makeObject<NSTrackingArea>(view->bounds(), kEnterAlways, view));
    ui.display().movePointer({175, 175});
    EXPECT_EQ(parent->take(), (Words{"enter"}));
    EXPECT_EQ(child->take(), (Words{"enter"}));
    const auto cover = makeObject<NSWindow>(CGRectMake(150, 150, 100, 100));
    cover->setLevel(NSFloatingWindowLevel);
    cover->setIgnoresMouseEvents(true);
    cover->orderFrontRegardless();
    ui.display().movePointer({176, 175});
    EXPECT_EQ(child->take(), Words{}) << "a window that ignores the mouse covers nothing";
    cover->setIgnoresMouseEvents(false);
    ui.display().movePointer({177, 175});
    EXPECT_EQ(child->take(), (Words{"exit"}));
    EXPECT_EQ(parent->take(), (Words{"exit"}));
}

TEST_F(InputTest, AreasAreSilentWhileAButtonIsDownUnlessTheyAskForDrags) {
    const auto plain = add(CGRectMake(0, 0, 50, 200));
    const auto eager = add(CGRectMake(50, 0, 50, 200));
    plain->addTrackingArea(makeObject<NSTrackingArea>(plain->bounds(), kEnterAlways, plain));
    eager->addTrackingArea(
        makeObject<NSTrackingArea>(eager->bounds(), kEnterAlways | NSTrackingEnabledDuringMouseDrag, eager));
    ui.display().movePointer({120, 150});
    EXPECT_EQ(plain->take(), (Words{"enter"}));
    ui.display().pressButton();
    ui.display().movePointer({170, 150});
    EXPECT_EQ(eager->take(), (Words{"enter"}));
    EXPECT_EQ(plain->take(), (Words{"down", "drag"})) << "the exit is held back";
    ui.display().releaseButton();
    EXPECT_EQ(plain->take(), (Words{"up", "exit"}));
}

TEST_F(InputTest, MonitorsRunInOrderMayReplaceOrStopAndEndInsideACallback) {
    Words log;
    const NSEventMask mask = NSEventMaskFromType(NSEventType::leftMouseDown);
    std::shared_ptr<NSObject> second;
    const auto first = NSEvent::addLocalMonitorForEventsMatchingMask(mask, [&](const auto& event) {
        log.push_back("first");
        NSEvent::removeMonitor(second);
        return event;
    });
    second = NSEvent::addLocalMonitorForEventsMatchingMask(mask, [&](const auto& event) {
        log.push_back("second");
        return event;
    });
    bool stop = false;
    const auto third = NSEvent::addLocalMonitorForEventsMatchingMask(
        mask, [&](const std::shared_ptr<NSEvent>& event) -> std::shared_ptr<NSEvent> {
            log.push_back("third");
            if (stop) return nullptr;
            return event;
        });
    const auto view = add(CGRectMake(0, 0, 200, 200));
    ui.display().click({150, 150});
    EXPECT_EQ(log, (Words{"first", "third"})) << "the removed one is skipped at once";
    EXPECT_EQ(view->take(), (Words{"down", "up"}));
    stop = true;
    ui.display().click({150, 150});
    EXPECT_EQ(view->take(), Words{}) << "stopped, so the release has no view either";
}

TEST_F(InputTest, APressOnAButtonFlipsThenSendsOnReleaseInside) {
    const auto counter = makeObject<Counter>();
    const auto button = add<NSButton>(CGRectMake(0, 0, 100, 30));
    button->setButtonType(NSButtonType::pushOnPushOff);
    button->setTarget(counter);
    button->setAction(kCount);
    ui.display().movePointer({120, 110});
    ui.display().pressButton();
    EXPECT_TRUE(button->cell()->isHighlighted());
    EXPECT_TRUE(ui.application().isTracking());
    ui.display().movePointer({250, 250});
    EXPECT_FALSE(button->cell()->isHighlighted());
    ui.display().movePointer({200, 110});
    EXPECT_FALSE(button->cell()->isHighlighted()) << "the right edge is outside";
    ui.display().movePointer({199, 110});
    EXPECT_TRUE(button->cell()->isHighlighted());
    ui.display().releaseButton();
    EXPECT_EQ(counter->calls, 1);
    EXPECT_EQ(button->state(), NSControlStateValue::on);
    EXPECT_FALSE(button->cell()->isHighlighted());
    ui.display().movePointer({120, 110});
    ui.display().pressButton();
    ui.display().movePointer({250, 250});
    ui.display().releaseButton();
    EXPECT_EQ(counter->calls, 1) << "a release outside does nothing";
    EXPECT_EQ(button->state(), NSControlStateValue::on);
    button->setEnabled(false);
    ui.display().click({120, 110});
    EXPECT_EQ(counter->calls, 1);
    EXPECT_FALSE(ui.application().isTracking());
}

TEST_F(InputTest, APressKeepsItsReleaseFromMonitorsAndHoldsDefaultTimers) {
    Words log;
    const NSEventMask mask = NSEventMaskFromType(NSEventType::leftMouseDown) |
                             NSEventMaskFromType(NSEventType::leftMouseUp) |
                             NSEventMaskFromType(NSEventType::leftMouseDragged);
    NSEvent::addLocalMonitorForEventsMatchingMask(mask, [&](const std::shared_ptr<NSEvent>& event) {
        log.push_back(std::to_string(static_cast<int>(event->type())));
        return event;
    });
    add<NSButton>(CGRectMake(0, 0, 100, 30));
    int plain = 0;
    int common = 0;
    NSTimer::scheduledTimerWithTimeInterval(1, false, [&](NSTimer&) { ++plain; });
    NSTimer::timerWithTimeInterval(1, false, [&](NSTimer&) {
        ++common;
    })->addToMainRunLoop(NSRunLoopMode::commonModes);
    ui.display().movePointer({120, 110});
    ui.display().pressButton();
    ui.display().movePointer({130, 110});
    ui.advance(2);
    EXPECT_EQ(common, 1);
    EXPECT_EQ(plain, 0) << "waits for the release";
    ui.display().releaseButton();
    ui.turn();
    EXPECT_EQ(plain, 1);
    EXPECT_EQ(log, (Words{"1"}));
}

// Whatever goes, the button or a label on it that was hit, or the window, takes the release along.
TEST_F(InputTest, AButtonWhoseReleaseCantComeIsNoLongerPressed) {
    const auto button = add<NSButton>(CGRectMake(0, 0, 100, 30));
    const auto label = NSTextField::labelWithString("label");
    label->setFrame(CGRectMake(0, 0, 100, 30));
    const std::function<void()> goings[] = {[&] { button->removeFromSuperview(); },
                                            [&] { label->removeFromSuperview(); },
                                            [&] { window->orderOut(); }};
    for (const auto& go : goings) {
        content->addSubview(button);
        button->addSubview(label);
        window->makeKeyAndOrderFront();
        ui.turn();
        ui.display().movePointer({120, 110});
        ui.display().pressButton();
        ASSERT_TRUE(button->cell()->isHighlighted());
        go();
        EXPECT_FALSE(button->cell()->isHighlighted());
        EXPECT_FALSE(ui.application().isTracking());
        ui.display().releaseButton();
        ui.turn();
        EXPECT_FALSE(ui.application().isTracking());
    }
}

TEST_F(InputTest, KeysGoToEquivalentsTheFirstResponderAndTheWindow) {
    class Keys : public NSView {
      public:
        using NSView::NSView;
        Words heard;
        bool takes = false;
        [[nodiscard]] bool acceptsFirstResponder() const override { return true; }
        bool performKeyEquivalent(const NSEvent& event) override {
            heard.push_back("equivalent " + event.charactersIgnoringModifiers());
            return takes;
        }
        void moveLeft(NSObject* /*sender*/) override { heard.push_back("left"); }
    };
    const auto view = add<Keys>(CGRectMake(0, 0, 10, 10));
    const auto other = add<Keys>(CGRectMake(20, 0, 10, 10));
    ASSERT_TRUE(window->makeFirstResponder(view));
    ui.display().pressKey(123);
    EXPECT_EQ(view->heard, (Words{"equivalent ", "left"})) << "unhandled, so offered and then a command";
    view->heard.clear();
    view->takes = true;
    other->heard.clear();
    ui.display().setModifierFlags(NSEventModifierFlagCommand);
    ui.display().pressKey(0);
    EXPECT_EQ(view->heard, (Words{"equivalent a"}));
    EXPECT_EQ(other->heard, Words{}) << "the first taker ends it";
    EXPECT_TRUE(window->makeFirstResponder(nullptr));
    EXPECT_EQ(window->firstResponder(), window);
    view->removeFromSuperview();
    EXPECT_FALSE(window->makeFirstResponder(view)) << "not in this window";
}

TEST_F(InputTest, ActionsWithoutTargetGoUpFromTheFirstResponder) {
    class Taker : public NSView {
      public:
        using NSView::NSView;
        void act() { ++calls; }
        int calls = 0;
        [[nodiscard]] bool acceptsFirstResponder() const override { return true; }
    };
    const auto outer = add<Taker>(CGRectMake(0, 0, 100, 100));
    class Focus : public NSView {
        [[nodiscard]] bool acceptsFirstResponder() const override { return true; }
    };
    const auto inner = makeObject<Focus>();
    outer->addSubview(inner);
    ASSERT_TRUE(window->makeFirstResponder(inner));
    EXPECT_TRUE(ui.application().sendAction(Selector::of<&Taker::act>("act"), nullptr, nullptr));
    EXPECT_EQ(outer->calls, 1);
    EXPECT_FALSE(ui.application().sendAction(kCount, nullptr, nullptr)) << "nobody has it";
}

TEST_F(InputTest, TheFirstPressOfAnInactiveApplicationOnlyActivates) {
    const auto view = add(CGRectMake(0, 0, 200, 200));
    ui.display().setApplicationActive(false);
    EXPECT_FALSE(ui.application().isActive());
    EXPECT_EQ(ui.application().keyWindow(), nullptr);
    ui.display().click({150, 150});
    EXPECT_TRUE(ui.application().isActive());
    EXPECT_EQ(ui.application().keyWindow(), window);
    EXPECT_EQ(view->take(), Words{}) << "neither down nor up";
    ui.display().click({150, 150});
    EXPECT_EQ(view->take(), (Words{"down", "up"}));
    ui.display().setApplicationActive(false);
    const auto panel = makeObject<NSPanel>(CGRectMake(400, 100, 50, 50));
    const auto inPanel = makeObject<HearingView>();
    panel->setContentView(inPanel);
    panel->orderFrontRegardless();
    ui.display().click({420, 120});
    EXPECT_EQ(inPanel->take(), (Words{"down", "up"}));
    EXPECT_FALSE(ui.application().isActive()) << "a non-activating panel leaves the other one in front";
}

TEST_F(InputTest, HandlersThatThrowCostALineAndNoMore) {
    testkit::PlatformReports reports;
    class Thrower : public NSView {
      public:
        using NSView::NSView;
        void mouseDown(const NSEvent& /*event*/) override { throw std::runtime_error("down"); }
        void mouseEntered(const NSEvent& /*event*/) override { throw 7; }
    };
    const auto view = add<Thrower>(CGRectMake(0, 0, 200, 200));
    view->addTrackingArea(makeObject<NSTrackingArea>(view->bounds(), kEnterAlways, view));
    ui.display().click({150, 150});
    NSTimer::scheduledTimerWithTimeInterval(1, false, [](NSTimer&) { throw std::runtime_error("late"); });
    ui.advance(1);
    EXPECT_EQ(reports.take(), (Words{"event handler threw what is no exception", "event handler threw: down",
                                     "timer threw: late"}));
}

}  // namespace
}  // namespace zqcore
