#include <gtest/gtest.h>

#include <cmath>

#include "Platform/AppKit/NSButton.h"
#include "Platform/AppKit/NSImageView.h"
#include "Platform/AppKit/NSScrollView.h"
#include "Platform/AppKit/NSSegmentedControl.h"
#include "Platform/AppKit/NSStackView.h"
#include "Platform/AppKit/NSTextField.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/NSImage.h"
#include "Platform/Foundation/NSNotificationCenter.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/NSFont.h"
#include "Platform/QuartzCore/CALayer.h"
#include "TestKit/UI/FlippedView.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace zqcore {
namespace {

class ControlsTest : public testing::Test {
  protected:
    testkit::HeadlessApplication ui;
    std::shared_ptr<NSWindow> window = makeObject<NSWindow>(CGRectMake(100, 100, 300, 200));
    std::shared_ptr<NSView> content = window->contentView();
};

class Box : public NSView {
  public:
    explicit Box(CGSize size) : size_(size) {}
    [[nodiscard]] CGSize intrinsicContentSize() const override { return size_; }

  private:
    CGSize size_;
};

TEST_F(ControlsTest, TextFieldsMeasureByLines) {
    const auto label = NSTextField::labelWithString("Hello");
    label->setFont(NSFont::systemFontOfSize(13));
    const CGSize one = label->intrinsicContentSize();
    EXPECT_EQ(one.height, 16) << "the line height of the font";
    EXPECT_GT(one.width, 0);
    EXPECT_EQ(one.width, std::floor(one.width));
    label->setStringValue("");
    EXPECT_EQ(label->intrinsicContentSize(), (CGSize{0, 16}));
    label->setStringValue("one two three four five six seven");
    label->setPreferredMaxLayoutWidth(60);
    EXPECT_EQ(label->intrinsicContentSize().height, 16) << "a label has one line";
    EXPECT_LE(label->intrinsicContentSize().width, 60);
    label->setMaximumNumberOfLines(0);
    label->setLineBreakMode(NSLineBreakMode::byWordWrapping);
    EXPECT_GE(label->intrinsicContentSize().height, 48);
    EXPECT_EQ(std::fmod(label->intrinsicContentSize().height, 16), 0);
}

TEST_F(ControlsTest, FieldEditorLivesWithTheFocus) {
    const auto field = makeObject<NSTextField>(CGRectMake(0, 0, 100, 22));
    field->setStringValue("a\U0001F600b");
    content->addSubview(field);
    EXPECT_EQ(field->currentEditor(), nullptr);
    ASSERT_TRUE(window->makeFirstResponder(field));
    ASSERT_NE(field->currentEditor(), nullptr);
    EXPECT_EQ(field->currentEditor()->selectedRange(), (NSRange{0, 4})) << "all of it, in UTF-16 units";
    ASSERT_TRUE(window->makeFirstResponder(nullptr));
    EXPECT_EQ(field->currentEditor(), nullptr);
    EXPECT_FALSE(window->makeFirstResponder(NSTextField::labelWithString("no")));
}

TEST_F(ControlsTest, LabelsAndImagesPassClicksOnToTheButtonBelow) {
    class Target : public NSObject {
      public:
        void act() { ++calls; }
        int calls = 0;
    };
    const auto target = makeObject<Target>();
    const auto button = makeObject<NSButton>(CGRectMake(0, 0, 100, 50));
    button->setTarget(target);
    button->setAction(Selector::of<&Target::act>("act"));
    content->addSubview(button);
    const auto label = NSTextField::labelWithString("label");
    label->setFrame(CGRectMake(0, 0, 50, 50));
    const auto image = makeObject<NSImageView>(CGRectMake(50, 0, 50, 50));
    button->addSubview(label);
    button->addSubview(image);
    window->orderFront();
    ui.display().click({120, 120});
    ui.display().click({170, 120});
    EXPECT_EQ(target->calls, 2);
}

TEST_F(ControlsTest, StacksPlaceTheirViewsByConstraints) {
    const auto a = makeObject<Box>(CGSize{30, 10});
    const auto b = makeObject<Box>(CGSize{20, 30});
    const auto c = makeObject<Box>(CGSize{10, 20});
    const auto stack = NSStackView::stackViewWithViews({a, b, c});
    EXPECT_EQ(stack->fittingSize(), (CGSize{76, 30})) << "lengths and gaps together";
    stack->setCustomSpacing(2, a);
    EXPECT_EQ(stack->fittingSize(), (CGSize{70, 30}));
    stack->setFrame(CGRectMake(0, 0, 200, 50));
    content->addSubview(stack);
    stack->layoutSubtreeIfNeeded();
    EXPECT_EQ(a->frame(), CGRectMake(0, 20, 30, 10)) << "centred across, from the leading edge";
    EXPECT_EQ(b->frame(), CGRectMake(32, 10, 20, 30));
    EXPECT_EQ(c->frame(), CGRectMake(60, 15, 10, 20));
    b->setHidden(true);
    EXPECT_EQ(stack->fittingSize(), (CGSize{42, 20})) << "hidden views leave the layout";
    b->setHidden(false);
    stack->setOrientation(NSUserInterfaceLayoutOrientation::vertical);
    EXPECT_EQ(stack->fittingSize(), (CGSize{30, 70}));
    stack->insertArrangedSubview(c, 0);
    EXPECT_EQ(stack->arrangedSubviews(), (std::vector<std::shared_ptr<NSView>>{c, a, b}));
    stack->removeArrangedSubview(a);
    EXPECT_EQ(a->superview(), stack) << "stays a subview";
    EXPECT_EQ(stack->customSpacingAfterView(a), 8) << "forgotten with the arrangement";
    b->removeFromSuperview();
    EXPECT_EQ(stack->arrangedSubviews(), (std::vector<std::shared_ptr<NSView>>{c}));
}

TEST_F(ControlsTest, StacksTakeElementsOfTheirOwnList) {
    const std::vector<std::shared_ptr<NSView>> views = {makeObject<NSView>(), makeObject<NSView>(),
                                                        makeObject<NSView>()};
    const auto stack = NSStackView::stackViewWithViews(views);
    stack->setCustomSpacing(3, views[1]);
    stack->removeArrangedSubview(stack->arrangedSubviews()[0]);
    EXPECT_EQ(stack->customSpacingAfterView(views[1]), 3);
    stack->insertArrangedSubview(stack->arrangedSubviews()[0], 1);
    EXPECT_EQ(stack->arrangedSubviews(), (std::vector{views[2], views[1]}));
}

class ScrollTest : public ControlsTest {
  protected:
    std::shared_ptr<NSScrollView> scroll = makeObject<NSScrollView>(CGRectMake(0, 0, 100, 100));
    std::shared_ptr<testkit::FlippedView> document =
        makeObject<testkit::FlippedView>(CGRectMake(0, 0, 100, 250));
    int posts = 0;
    std::shared_ptr<NSObject> token;

    void SetUp() override {
        content->addSubview(scroll);
        scroll->setDocumentView(document);
        window->orderFront();
        ui.turn();
        ui.display().movePointer({150, 150});
        token = NSNotificationCenter::defaultCenter().addObserverForName(
            std::string(NSViewBoundsDidChangeNotification), scroll->contentView(),
            [this](const NSNotification&) { ++posts; });
    }
    void TearDown() override { NSNotificationCenter::defaultCenter().removeObserver(token); }
    [[nodiscard]] CGFloat y() const { return scroll->contentView()->bounds().origin.y; }
};

TEST_F(ScrollTest, AWheelStopsAtTheLimitsThatInsetsWiden) {
    ui.display().scroll(0, -30);
    EXPECT_EQ(y(), 30) << "the content moves up";
    ui.display().scroll(0, -500);
    EXPECT_EQ(y(), 150);
    ui.display().scroll(0, -5);
    EXPECT_EQ(posts, 2) << "an equal place posts nothing";
    scroll->setContentInsets({20, 0, 24, 0});
    EXPECT_EQ(posts, 2) << "insets move nothing";
    ui.display().scroll(0, -500);
    EXPECT_EQ(y(), 174);
    ui.display().scroll(0, 500);
    EXPECT_EQ(y(), -20);
    document->setFrameSize({100, 50});
    EXPECT_EQ(y(), -20);
    EXPECT_EQ(document->frame().origin, (CGPoint{0, 0})) << "the document's frame stays";
}

TEST_F(ScrollTest, AGestureMayPullPastTheTopAndSpringsBackAtItsEnd) {
    ui.display().scroll(0, 10, NSEventPhase::began);
    EXPECT_EQ(y(), 0) << "not without elasticity";
    scroll->setVerticalScrollElasticity(NSScrollElasticity::allowed);
    ui.display().scroll(0, 20, NSEventPhase::changed);
    EXPECT_EQ(y(), -20);
    ui.display().scroll(0, 1, NSEventPhase::changed);
    EXPECT_EQ(y(), -21) << "undamped";
    posts = 0;
    ui.display().scroll(0, 0, NSEventPhase::ended);
    EXPECT_EQ(y(), -21);
    ui.advance(0.125);
    EXPECT_GT(y(), -21);
    EXPECT_LT(y(), 0);
    ui.advance(0.125);
    EXPECT_EQ(y(), 0);
    EXPECT_EQ(posts, 15) << "60 steps a second, each posted";
    // A new gesture takes hold of the content in the midst of the spring.
    ui.display().scroll(0, 40, NSEventPhase::began);
    ui.display().scroll(0, 0, NSEventPhase::ended);
    ui.advance(0.05);
    ui.display().scroll(0, 0, NSEventPhase::began);
    const CGFloat held = y();
    ui.advance(1);
    EXPECT_EQ(y(), held);
}

TEST_F(ScrollTest, ADocumentThatShrinksBringsThePlaceWithin) {
    ui.display().scroll(0, -150);
    posts = 0;
    document->setFrameSize({100, 180});
    EXPECT_EQ(y(), 80);
    EXPECT_EQ(posts, 1);
    scroll->contentView()->setBoundsOrigin({0, 500});
    EXPECT_EQ(y(), 500) << "code sets what it says";
    scroll->contentView()->animator().setBoundsOrigin({0, 0});
    ui.advance(0.1);
    document->setFrameSize({100, 1000});
    ui.advance(0.05);
    EXPECT_LT(y(), 250) << "what stays within the limits goes on";
    scroll->contentView()->setBoundsOrigin({0, 40});
    ui.advance(1);
    EXPECT_EQ(y(), 40) << "and ends the way that was under way";
}

TEST_F(ScrollTest, AKnobShowsThePlaceForAMoment) {
    scroll->setHasVerticalScroller(true);
    const auto scroller = scroll->verticalScroller();
    const auto shownAlpha = [&] { return scroller->layer()->presentation().opacity; };
    ui.turn();
    EXPECT_EQ(scroller->knobProportion(), 0.4) << "100 of 250";
    EXPECT_EQ(shownAlpha(), 0) << "nothing moved yet";
    ui.display().scroll(0, -75);
    EXPECT_EQ(scroller->doubleValue(), 0.5);
    EXPECT_EQ(CGRectGetMidY(scroller->knobRect()), 50);
    EXPECT_EQ(shownAlpha(), 1);
    ui.advance(0.9);
    EXPECT_LT(shownAlpha(), 1);
    EXPECT_GT(shownAlpha(), 0);
    ui.advance(0.2);
    EXPECT_EQ(shownAlpha(), 0);
    ui.display().movePointer({198, 150});
    ui.display().scroll(0, -10);
    EXPECT_EQ(y(), 85) << "it takes no events";
    scroll->setContentInsets({50, 0, 50, 0});
    scroll->contentView()->setBoundsOrigin({0, -50});
    scroll->reflectScrolledClipView(*scroll->contentView());
    EXPECT_EQ(scroller->doubleValue(), 0) << "insets count";
    scroll->setContentInsets({});
    document->setFrameSize({100, 10});
    EXPECT_TRUE(CGRectIsNull(scroller->knobRect())) << "nothing to scroll";
}

TEST_F(ControlsTest, SegmentsAreSelectedByPressAndReleaseInTheSameOne) {
    const auto segments = makeObject<NSSegmentedControl>(CGRectMake(0, 0, 90, 20));
    segments->setSegmentCount(3);
    content->addSubview(segments);
    window->orderFront();
    ui.display().click({145, 110});
    EXPECT_EQ(segments->selectedSegment(), 1);
    ui.display().movePointer({115, 110});
    ui.display().pressButton();
    ui.display().movePointer({175, 110});
    ui.display().releaseButton();
    EXPECT_EQ(segments->selectedSegment(), 1);
    segments->setSelectedSegment(7);
    EXPECT_EQ(segments->selectedSegment(), -1);
}

}  // namespace
}  // namespace zqcore
