#include "Platform/AppKit/NSView.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Platform/AppKit/NSTrackingArea.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/AppKit/PointerTracking.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/QuartzCore/CALayer.h"
#include "TestKit/PlatformReports.h"
#include "TestKit/UI/FlippedView.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace zqcore {
namespace {

class NSViewTest : public testing::Test {
  protected:
    testkit::HeadlessApplication ui;
    std::shared_ptr<NSWindow> window = makeObject<NSWindow>(CGRectMake(100, 200, 400, 300));
    std::shared_ptr<NSView> content = window->contentView();
};

// A point of the innermost of three views, in its parent's spaces up to the window.
TEST_F(NSViewTest, ConvertsThroughFlipsAndBoundsOrigins) {
    struct Case {
        bool outerFlipped, innerFlipped;
        CGPoint outerOrigin, innerOrigin;  // of the bounds
        CGPoint window;                    // where (10, 5) of the inner view lies
    };
    // Outer frame {20, 30, 200, 100} in the content view, inner frame {40, 10, 60, 50} in the outer one.
    const std::vector<Case> cases = {
        {false, false, {0, 0}, {0, 0}, {70, 45}}, {true, true, {0, 0}, {0, 0}, {70, 115}},
        {true, false, {0, 0}, {0, 0}, {70, 75}},  {false, true, {0, 0}, {0, 0}, {70, 85}},
        {false, false, {5, 7}, {0, 0}, {65, 38}}, {true, true, {0, -20}, {0, 3}, {70, 98}},
        {false, true, {0, 0}, {2, 4}, {68, 89}},
    };
    for (const Case& c : cases) {
        const auto outer = c.outerFlipped ? makeObject<testkit::FlippedView>(CGRectMake(20, 30, 200, 100))
                                          : makeObject<NSView>(CGRectMake(20, 30, 200, 100));
        const auto inner = c.innerFlipped ? makeObject<testkit::FlippedView>(CGRectMake(40, 10, 60, 50))
                                          : makeObject<NSView>(CGRectMake(40, 10, 60, 50));
        content->addSubview(outer);
        outer->addSubview(inner);
        outer->setBoundsOrigin(c.outerOrigin);
        inner->setBoundsOrigin(c.innerOrigin);
        const CGPoint place = inner->convertPointToView({10, 5}, nullptr);
        EXPECT_EQ(place, c.window) << c.outerFlipped << c.innerFlipped << " " << place.x << ", " << place.y;
        EXPECT_EQ(inner->convertPointFromView(place, nullptr), (CGPoint{10, 5})) << "and back";
        EXPECT_EQ(content->convertPointFromView({10, 5}, inner), c.window) << "the content fills the window";
        outer->removeFromSuperview();
    }
    const auto flipped = makeObject<testkit::FlippedView>(CGRectMake(0, 0, 400, 300));
    content->addSubview(flipped);
    EXPECT_EQ(flipped->convertRectToView({{10, 20}, {30, 40}}, nullptr), CGRectMake(10, 240, 30, 40));
    EXPECT_EQ(window->convertRectToScreen({{10, 240}, {30, 40}}), CGRectMake(110, 440, 30, 40));
}

TEST_F(NSViewTest, HitsTheFrontmostViewUnderThePoint) {
    const auto back = makeObject<NSView>(CGRectMake(0, 0, 100, 100));
    const auto front = makeObject<testkit::FlippedView>(CGRectMake(50, 50, 100, 100));
    const auto outside = makeObject<NSView>(CGRectMake(90, 10, 50, 20));  // reaches out of its parent
    content->addSubview(back);
    content->addSubview(front);
    front->addSubview(outside);
    EXPECT_EQ(content->hitTest({75, 75}), front);
    EXPECT_EQ(content->hitTest({20, 20}), back);
    EXPECT_EQ(content->hitTest({145, 135}), outside) << "the part inside its parent";
    EXPECT_EQ(content->hitTest({160, 135}), content) << "the part outside is never hit";
    // On an unflipped side the upper edge is in and the lower out; x as usual.
    EXPECT_EQ(content->hitTest({0, 100}), back);
    EXPECT_EQ(content->hitTest({0, 0}), content);
    EXPECT_EQ(content->hitTest({100, 20}), content);
    front->setHidden(true);
    EXPECT_EQ(content->hitTest({75, 75}), back);
    content->sortSubviewsUsingFunction(
        [&](NSView& a, NSView&) { return &a == front.get() ? NSOrderedAscending : NSOrderedSame; });
    front->setHidden(false);
    EXPECT_EQ(content->hitTest({75, 75}), back) << "now behind";
}

TEST_F(NSViewTest, TellsTheTreeInOrder) {
    static std::vector<std::string> log;
    class Teller : public NSView {
      public:
        explicit Teller(std::string name) : name_(std::move(name)) {}
        void viewWillMoveToWindow(const std::shared_ptr<NSWindow>& to) override {
            log.push_back(name_ + (to ? " will window" : " will leave window"));
        }
        void viewDidMoveToWindow() override { log.push_back(name_ + " did window"); }
        void viewWillMoveToSuperview(const std::shared_ptr<NSView>& to) override {
            log.push_back(name_ + (to ? " will superview" : " will leave"));
        }
        void viewDidMoveToSuperview() override { log.push_back(name_ + " did superview"); }
        void didAddSubview(NSView& /*view*/) override { log.push_back(name_ + " added"); }
        void willRemoveSubview(NSView& /*view*/) override { log.push_back(name_ + " removes"); }

      private:
        std::string name_;
    };
    log.clear();
    const auto parent = makeObject<Teller>("parent");
    const auto child = makeObject<Teller>("child");
    parent->addSubview(child);
    EXPECT_EQ(log, (std::vector<std::string>{"child will superview", "child did superview", "parent added"}));
    log.clear();
    content->addSubview(parent);
    EXPECT_EQ(log,
              (std::vector<std::string>{"parent will window", "child will window", "parent will superview",
                                        "parent did window", "child did window", "parent did superview"}));
    log.clear();
    child->removeFromSuperview();
    EXPECT_EQ(log, (std::vector<std::string>{"child will leave window", "child will leave", "parent removes",
                                             "child did window", "child did superview"}));
    EXPECT_EQ(child->window(), nullptr);
    parent->addSubview(parent);
    child->addSubview(child);
    EXPECT_TRUE(parent->subviews().empty()) << "a view can't be its own ancestor";
}

TEST_F(NSViewTest, SurvivesViewsThatChangeTheTreeOrThrowInTheirCallbacks) {
    class Leaver : public NSView {
      public:
        void viewDidMoveToWindow() override {
            if (window()) removeFromSuperview();
        }
    };
    class Thrower : public NSView {
      public:
        void viewDidMoveToSuperview() override { throw std::runtime_error("no"); }
        void layout() override { throw 1; }
    };
    const auto holder = makeObject<NSView>();
    const auto leaver = makeObject<Leaver>();
    const auto other = makeObject<NSView>();
    holder->addSubview(leaver);
    holder->addSubview(other);
    content->addSubview(holder);
    EXPECT_EQ(leaver->superview(), nullptr);
    EXPECT_EQ(leaver->window(), nullptr);
    EXPECT_EQ(other->window(), window);
    testkit::PlatformReports reports;
    content->addSubview(makeObject<Thrower>());
    window->orderFront();
    ui.turn();
    EXPECT_EQ(reports.take(), (std::vector<std::string>{"viewDidMoveToSuperview threw: no",
                                                        "layout threw what is no exception"}));
    EXPECT_TRUE(window->isVisible());
}

TEST_F(NSViewTest, TakesElementsOfTheListsThatItChanges) {
    const auto from = makeObject<NSView>();
    const auto to = makeObject<NSView>();
    const std::vector views = {makeObject<NSView>(), makeObject<NSView>()};
    for (const auto& view : views) from->addSubview(view);
    to->addSubview(from->subviews()[0]);
    EXPECT_EQ(to->subviews(), (std::vector{views[0]}));
    EXPECT_EQ(from->subviews(), (std::vector{views[1]}));
    EXPECT_EQ(views[0]->superview(), to);

    const std::vector areas = {makeObject<NSTrackingArea>(CGRectMake(0, 0, 5, 5), 129U, from),
                               makeObject<NSTrackingArea>(CGRectMake(0, 0, 5, 5), 129U, from)};
    for (const auto& area : areas) from->addTrackingArea(area);
    from->removeTrackingArea(from->trackingAreas()[0]);
    EXPECT_EQ(from->trackingAreas(), (std::vector{areas[1]}));
    EXPECT_TRUE(PointerTracking::shared().knows(*areas[1]));
    EXPECT_FALSE(PointerTracking::shared().knows(*areas[0]));
}

TEST_F(NSViewTest, HidingLeavesTheOpacityOfTheLayer) {
    content->setAlphaValue(0.5);
    EXPECT_EQ(content->layer()->opacity(), 0.5);
    content->layer()->setOpacity(0.25);
    content->setHidden(true);
    content->setHidden(false);
    EXPECT_EQ(content->layer()->opacity(), 0.25);
    EXPECT_EQ(content->alphaValue(), 0.25);
}

TEST_F(NSViewTest, PostsFrameAndBoundsChangesByTheirSwitches) {
    int frames = 0;
    int bounds = 0;
    auto& center = NSNotificationCenter::defaultCenter();
    const auto view = makeObject<NSView>(CGRectMake(0, 0, 10, 10));
    const auto a = center.addObserverForName(std::string(NSViewFrameDidChangeNotification), view,
                                             [&](const NSNotification&) { ++frames; });
    const auto b = center.addObserverForName(std::string(NSViewBoundsDidChangeNotification), view,
                                             [&](const NSNotification&) { ++bounds; });
    view->setFrameSize({20, 20});
    EXPECT_EQ(frames, 1);
    EXPECT_EQ(bounds, 0) << "a frame change never posts a bounds change";
    view->setBoundsOrigin({0, 5});
    view->setBoundsOrigin({0, 5});
    EXPECT_EQ(bounds, 1) << "an equal value posts nothing";
    view->setPostsBoundsChangedNotifications(false);
    view->setBoundsOrigin({0, 9});
    EXPECT_EQ(bounds, 1);
    view->setPostsBoundsChangedNotifications(true);
    EXPECT_EQ(bounds, 2) << "the missed change";
    view->setPostsBoundsChangedNotifications(true);
    EXPECT_EQ(bounds, 2);
    center.removeObserver(a);
    center.removeObserver(b);
}

// How a mask divides the change is the layers' table.
TEST_F(NSViewTest, ResizesSubviewsByTheirMasksUnlessConstraintsPlaceThem) {
    const auto parent = makeObject<NSView>(CGRectMake(0, 0, 100, 100));
    const auto resized = makeObject<NSView>(CGRectMake(10, 20, 30, 40));
    const auto placed = makeObject<NSView>(CGRectMake(10, 20, 30, 40));
    placed->setTranslatesAutoresizingMaskIntoConstraints(false);
    for (const auto& child : {resized, placed}) {
        child->setAutoresizingMask(NSViewHeightSizable | NSViewMinXMargin);
        parent->addSubview(child);
    }
    parent->setFrameSize({160, 130});
    EXPECT_EQ(resized->frame(), CGRectMake(70, 20, 30, 70));
    EXPECT_EQ(placed->frame(), CGRectMake(10, 20, 30, 40));
    parent->setAutoresizesSubviews(false);
    parent->setFrameSize({100, 100});
    EXPECT_EQ(resized->frame(), CGRectMake(70, 20, 30, 70));
}

}  // namespace
}  // namespace zqcore
