#include "Classes/Core/Extension/AppKit/NSViewExtension.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "Classes/Core/Extension/AppKit/FrameGeometry.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/NSImage.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGImage.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/QuartzCore/CALayer.h"
#include "TestKit/UI/FlippedView.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace zqcore {
namespace {

class NSViewExtensionTest : public testing::Test {
  protected:
    testkit::HeadlessApplication ui;
    std::shared_ptr<NSView> view = makeObject<NSView>(CGRectMake(10, 20, 100, 50));
};

TEST_F(NSViewExtensionTest, OneTrackingAreaHoweverOften) {
    zq_convenienceAddTrackingArea(*view, NSTrackingMouseEnteredAndExited | NSTrackingActiveAlways);
    zq_convenienceAddTrackingArea(*view, NSTrackingMouseMoved | NSTrackingActiveAlways);
    ASSERT_EQ(view->trackingAreas().size(), 1U);
    const auto& area = view->trackingAreas().front();
    EXPECT_EQ(area->options(), 130U);
    EXPECT_EQ(area->rect(), CGRectMake(0, 0, 100, 50));
    EXPECT_EQ(area->owner(), view);
}

TEST_F(NSViewExtensionTest, MovesOneSubviewAndKeepsTheOrderOfTheOthers) {
    std::vector<std::shared_ptr<NSView>> made;
    for (int index = 0; index < 4; ++index) {
        made.push_back(makeObject<NSView>());
        view->addSubview(made.back());
    }
    const auto order = [&] {
        std::string text;
        for (const auto& subview : view->subviews())
            text += static_cast<char>('a' + (std::find(made.begin(), made.end(), subview) - made.begin()));
        return text;
    };
    bringSubviewToFront(*view, made[1]);
    EXPECT_EQ(order(), "acdb");
    sendSubviewToBack(*view, made[3]);
    EXPECT_EQ(order(), "dacb");
    bringSubviewToFront(*view, makeObject<NSView>());
    sendSubviewToBack(*view, nullptr);
    EXPECT_EQ(order(), "dacb") << "strangers change nothing";
    removeAllSubviews(*view);
    EXPECT_TRUE(view->subviews().empty());
    EXPECT_FALSE(made[0]->superview());
}

TEST_F(NSViewExtensionTest, BackgroundColorIsTheLayers) {
    EXPECT_FALSE(backgroundColor(*view));
    setBackgroundColor(*view, NSColor::colorWithRGBA(1, 0.5, 0, 0.5));
    EXPECT_TRUE(view->wantsLayer());
    EXPECT_EQ(view->layer()->backgroundColor(), (CGColor{1, 0.5, 0, 0.5}));
    ASSERT_TRUE(backgroundColor(*view));
    EXPECT_TRUE(backgroundColor(*view)->isEqual(*NSColor::colorWithRGBA(1, 0.5, 0, 0.5)));
    setBackgroundColor(*view, NSColor::clearColor());
    ASSERT_TRUE(backgroundColor(*view)) << "clear is a colour";
    EXPECT_EQ(backgroundColor(*view)->alphaComponent(), 0);
    setBackgroundColor(*view, nullptr);
    EXPECT_FALSE(backgroundColor(*view));
}

// A red quarter at the visible upper left, seen whatever the views' own senses of y.
TEST_F(NSViewExtensionTest, SnapshotsShowTheViewUpright) {
    for (const bool superIsFlipped : {false, true}) {
        for (const bool isFlipped : {false, true}) {
            const CGRect frame = CGRectMake(30, 10, 8, 4);
            const auto outer = superIsFlipped ? makeObject<testkit::FlippedView>(CGRectMake(0, 0, 100, 100))
                                              : makeObject<NSView>(CGRectMake(0, 0, 100, 100));
            const auto shot = isFlipped ? makeObject<testkit::FlippedView>(frame) : makeObject<NSView>(frame);
            const auto quarter = makeObject<NSView>(CGRectMake(0, isFlipped ? 0 : 2, 4, 2));
            setBackgroundColor(*shot, NSColor::whiteColor());
            setBackgroundColor(*quarter, NSColor::colorWithRGBA(1, 0, 0));
            outer->addSubview(shot);
            shot->addSubview(quarter);
            const auto image = zq_snapshot(*shot);
            EXPECT_EQ(image->size(), (CGSize{8, 4}));
            const auto context = CGContext::bitmap(8, 4);
            ASSERT_TRUE(context);
            image->draw(*context, CGRectMake(0, 0, 8, 4));
            const auto pixels = context->makeImage();
            EXPECT_EQ(pixels->colorAt(1, 0), (CGColor{1, 0, 0, 1})) << superIsFlipped << isFlipped;
            EXPECT_EQ(pixels->colorAt(6, 0), (CGColor{1, 1, 1, 1})) << superIsFlipped << isFlipped;
            EXPECT_EQ(pixels->colorAt(1, 3), (CGColor{1, 1, 1, 1})) << superIsFlipped << isFlipped;
        }
    }
    const auto line = zq_snapshot(*makeObject<NSView>(CGRectMake(0, 0, 8, 0)));
    EXPECT_TRUE(line->representations().empty()) << "without area it is empty";
    EXPECT_EQ(line->size(), CGSize());
}

TEST_F(NSViewExtensionTest, FramesOutsideNeedAWindow) {
    EXPECT_FALSE(zq_frameInWindow(*view));
    EXPECT_FALSE(zq_frameInScreen(*view));
    const auto window = makeObject<NSWindow>(CGRectMake(300, 400, 200, 100));
    window->contentView()->addSubview(view);
    view->setBoundsOrigin({7, 7});
    EXPECT_EQ(zq_frameInWindow(*view), CGRectMake(10, 20, 100, 50));
    EXPECT_EQ(zq_frameInScreen(*view), CGRectMake(310, 420, 100, 50));
}

// What a write does to {10, 20, 100, 50}, in a plain and in a flipped view.
TEST_F(NSViewExtensionTest, GeometryOfViewsMovesTheFrame) {
    using G = ViewGeometry;
    struct Case {
        const char* what;
        void (*write)(const G&);
        CGRect plain, flipped;
    };
    const Case cases[] = {
        {"x", [](const G& g) { g.setX(1); }, CGRectMake(1, 20, 100, 50), CGRectMake(1, 20, 100, 50)},
        {"y", [](const G& g) { g.setY(1); }, CGRectMake(10, 1, 100, 50), CGRectMake(10, 1, 100, 50)},
        {"width", [](const G& g) { g.setWidth(1); }, CGRectMake(10, 20, 1, 50), CGRectMake(10, 20, 1, 50)},
        {"height", [](const G& g) { g.setHeight(1); }, CGRectMake(10, 20, 100, 1),
         CGRectMake(10, 20, 100, 1)},
        {"origin",
         [](const G& g) {
             g.setOrigin({1, 2});
         },
         CGRectMake(1, 2, 100, 50), CGRectMake(1, 2, 100, 50)},
        {"size",
         [](const G& g) {
             g.setSize({1, 2});
         },
         CGRectMake(10, 20, 1, 2), CGRectMake(10, 20, 1, 2)},
        {"right", [](const G& g) { g.setRight(200); }, CGRectMake(100, 20, 100, 50),
         CGRectMake(100, 20, 100, 50)},
        {"centerX", [](const G& g) { g.setCenterX(0); }, CGRectMake(-50, 20, 100, 50),
         CGRectMake(-50, 20, 100, 50)},
        {"centerY", [](const G& g) { g.setCenterY(0); }, CGRectMake(10, -25, 100, 50),
         CGRectMake(10, -25, 100, 50)},
        {"center",
         [](const G& g) {
             g.setCenter({0, 0});
         },
         CGRectMake(-50, -25, 100, 50), CGRectMake(-50, -25, 100, 50)},
        {"top", [](const G& g) { g.setTop(60); }, CGRectMake(10, 10, 100, 50), CGRectMake(10, 60, 100, 50)},
        {"bottom", [](const G& g) { g.setBottom(60); }, CGRectMake(10, 60, 100, 50),
         CGRectMake(10, 10, 100, 50)},
        {"topLeft",
         [](const G& g) {
             g.setTopLeft({1, 60});
         },
         CGRectMake(1, 10, 100, 50), CGRectMake(1, 60, 100, 50)},
        {"leftBottom",
         [](const G& g) {
             g.setLeftBottom({1, 60});
         },
         CGRectMake(1, 60, 100, 50), CGRectMake(1, 10, 100, 50)},
        {"bottomRight",
         [](const G& g) {
             g.setBottomRight({200, 60});
         },
         CGRectMake(100, 60, 100, 50), CGRectMake(100, 10, 100, 50)},
        {"topRight",
         [](const G& g) {
             g.setTopRight({200, 60});
         },
         CGRectMake(100, 10, 100, 50), CGRectMake(100, 60, 100, 50)},
    };
    for (const auto& [what, write, plain, flipped] : cases) {
        const auto plainView = makeObject<NSView>(CGRectMake(10, 20, 100, 50));
        const auto flippedView = makeObject<testkit::FlippedView>(CGRectMake(10, 20, 100, 50));
        write(geometry(*plainView));
        write(geometry(*flippedView));
        EXPECT_EQ(plainView->frame(), plain) << what << NSStringFromRect(plainView->frame());
        EXPECT_EQ(flippedView->frame(), flipped) << what << NSStringFromRect(flippedView->frame());
    }
    const auto flippedView = makeObject<testkit::FlippedView>(CGRectMake(10, 20, 100, 50));
    EXPECT_EQ(geometry(*view).top(), 70);
    EXPECT_EQ(geometry(*flippedView).top(), 20);
    EXPECT_EQ(geometry(*view).topRight(), (CGPoint{110, 70}));
    EXPECT_EQ(geometry(*flippedView).leftBottom(), (CGPoint{10, 70}));
    EXPECT_EQ(geometry(*view).center(), (CGPoint{60, 45}));
}

TEST_F(NSViewExtensionTest, GeometryOfWindowsMovesThemOnTheScreen) {
    const auto window = makeObject<NSWindow>(CGRectMake(300, 400, 200, 100));
    const auto place = geometry(*window);
    place.setTop(450);
    EXPECT_EQ(window->frame(), CGRectMake(300, 350, 200, 100));
    place.setTopRight({600, 500});
    EXPECT_EQ(window->frame(), CGRectMake(400, 400, 200, 100));
    place.setBottomRight({600, 10});
    EXPECT_EQ(window->frame(), CGRectMake(400, 10, 200, 100));
    place.setTopLeft({1, 101});
    EXPECT_EQ(window->frame(), CGRectMake(1, 1, 200, 100));
    place.setCenterPoint({200, 100});
    EXPECT_EQ(window->frame(), CGRectMake(100, 50, 200, 100));
    place.setRight(200);
    place.setWidth(50);
    EXPECT_EQ(window->frame(), CGRectMake(0, 50, 50, 100));
    EXPECT_EQ(place.top(), 150);
    EXPECT_EQ(place.centerX(), 25);
}

}  // namespace
}  // namespace zqcore
