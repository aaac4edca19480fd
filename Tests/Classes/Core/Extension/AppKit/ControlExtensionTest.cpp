#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "Classes/Core/Extension/AppKit/NSButtonExtension.h"
#include "Classes/Core/Extension/AppKit/NSNibLoading.h"
#include "Classes/Core/Extension/AppKit/NSScrollViewExtension.h"
#include "Classes/Core/Extension/AppKit/NSStackViewExtension.h"
#include "Classes/Core/Extension/AppKit/NSTextExtension.h"
#include "Classes/Core/Extension/AppKit/NSViewControllerExtension.h"
#include "Classes/Core/Extension/AppKit/NSViewExtension.h"
#include "Classes/Core/Utility/ZQTargetBindable.h"
#include "Platform/AppKit/NSScrollView.h"
#include "Platform/AppKit/NSStackView.h"
#include "Platform/AppKit/NSTextField.h"
#include "Platform/AppKit/NSViewController.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSFont.h"
#include "Platform/QuartzCore/CALayer.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace zqcore {

class NibView final : public NSView {};

namespace {

class ControlExtensionTest : public testing::Test {
  protected:
    ControlExtensionTest() { window->orderFront(); }

    testkit::HeadlessApplication ui;
    std::shared_ptr<NSWindow> window = makeObject<NSWindow>(CGRectMake(100, 200, 400, 300));
    std::shared_ptr<NSView> content = window->contentView();
};

TEST_F(ControlExtensionTest, ImageButtonsToggle) {
    const auto button = zq_imageButton();
    EXPECT_FALSE(button->isBordered());
    EXPECT_EQ(static_cast<int>(button->imageScaling()), 0);
    EXPECT_EQ(static_cast<int>(button->bezelStyle()), 2);
    EXPECT_EQ(static_cast<int>(button->buttonType()), 2);

    EXPECT_FALSE(isOn(*button));
    setIsOn(*button, true);
    EXPECT_EQ(button->state(), NSControlStateValue::on);
    button->setState(NSControlStateValue::mixed);
    EXPECT_FALSE(isOn(*button));

    zq_update(*button, "Go", NSFont::systemFontOfSize(15), NSColor::blackColor());
    EXPECT_EQ(button->title(), "Go");
    EXPECT_EQ(button->font()->pointSize(), 15);
    EXPECT_TRUE(button->contentTintColor()->isEqual(*NSColor::blackColor()));
    zq_update(*button, std::nullopt, nullptr, nullptr);
    EXPECT_EQ(button->title(), "");
}

TEST_F(ControlExtensionTest, ButtonsTakeAFunctionInThePlaceOfATarget) {
    const auto button = makeObject<NSButton>(CGRectMake(10, 10, 80, 24));
    content->addSubview(button);
    int pressed = 0;
    zq_bindAction(button, [&](NSButton& sender) { pressed += &sender == button.get() ? 1 : 100; });
    ui.turn();
    ui.display().click({130, 220});
    EXPECT_EQ(pressed, 1);
    zq_bindAction(button, {});
    ui.display().click({130, 220});
    EXPECT_EQ(pressed, 1);
}

TEST_F(ControlExtensionTest, StacksHideAndShowTheirViews) {
    const auto stack = makeObject<NSStackView>(CGRectMake(0, 0, 300, 40));
    content->addSubview(stack);
    std::vector<std::shared_ptr<NSView>> views;
    for (int index = 0; index < 3; ++index) {
        views.push_back(makeObject<NSView>());
        stack->addArrangedSubview(views.back());
    }
    int done = 0;
    const auto count = [&] { ++done; };
    zq_hideViews(*stack, {views[0], views[1]}, false, count);
    EXPECT_EQ(done, 1) << "not animated, inside the call";
    EXPECT_TRUE(views[0]->isHidden() && views[1]->isHidden() && !views[2]->isHidden());
    zq_hideViews(*stack, {views[2]}, true, count);
    EXPECT_TRUE(views[2]->isHidden()) << "at once";
    EXPECT_EQ(done, 1);
    ui.advance(0.249);
    EXPECT_EQ(done, 1);
    ui.advance(0.001);
    ui.turn();
    EXPECT_EQ(done, 2);

    zq_showViews(*stack, {views[0]}, false, count);
    EXPECT_FALSE(views[0]->isHidden());
    EXPECT_EQ(views[0]->layer()->opacity(), 1);
    EXPECT_EQ(done, 3);
    zq_showViews(*stack, {views[1]}, true, count);
    EXPECT_FALSE(views[1]->isHidden());
    EXPECT_EQ(views[1]->layer()->opacity(), 0) << "unseen until there is room";
    ui.advance(0.25);
    ui.turn();
    EXPECT_EQ(views[1]->layer()->opacity(), 1);
    EXPECT_EQ(done, 4);

    removeAllArrangedSubviews(*stack);
    EXPECT_TRUE(stack->arrangedSubviews().empty());
    EXPECT_TRUE(stack->subviews().empty());
}

TEST_F(ControlExtensionTest, ScrollViewsScrollByPoints) {
    const auto scroll = makeObject<NSScrollView>(CGRectMake(0, 0, 200, 100));
    EXPECT_EQ(zq_contentSize(*scroll), CGSize{});
    content->addSubview(scroll);
    scroll->setDocumentView(makeObject<NSView>(CGRectMake(0, 0, 200, 1000)));
    ui.turn();
    EXPECT_EQ(zq_contentSize(*scroll), (CGSize{200, 1000}));
    zq_setContentOffset(*scroll, {0, 40});
    EXPECT_EQ(zq_contentOffset(*scroll), (CGPoint{0, 40}));
    zq_scrollToPoint(*scroll, {0, 80}, 0);
    EXPECT_EQ(zq_contentOffset(*scroll), (CGPoint{0, 80}));
    zq_scrollToPoint(*scroll, {0, 180}, 0.5);
    ui.advance(0.25);
    EXPECT_GT(zq_contentOffset(*scroll).y, 80);
    EXPECT_LT(zq_contentOffset(*scroll).y, 180);
    ui.advance(0.25);
    EXPECT_EQ(zq_contentOffset(*scroll), (CGPoint{0, 180}));
}

TEST_F(ControlExtensionTest, TextsTellTheirSelection) {
    const auto view = makeObject<NSTextView>();
    view->setSelectedRanges({{0, 3}});
    EXPECT_EQ(zq_selectedText(*view), "");
    view->setString("a😀翻译 end");
    struct Case {
        std::vector<NSRange> ranges;
        std::string selected;
    };
    const Case cases[] = {
        {{{3, 2}}, "翻译"},
        {{{0, 3}, {6, 3}}, "a😀\nend"},
        {{{0, 1}, {8, 9}, {6, 3}}, "a\nend"},
        {{{9, 0}}, ""},
        {{{10, 0}}, ""},
        {{{0, 0}, {0, 1}}, "\na"},
        {{{2, static_cast<std::size_t>(-1)}}, ""},
    };
    for (const auto& [ranges, selected] : cases) {
        view->setSelectedRanges(ranges);
        EXPECT_EQ(zq_selectedText(*view), selected);
    }

    const auto field = makeObject<NSTextField>(CGRectMake(0, 0, 100, 20));
    zq_deselectText(*field);
    zq_endEditing(*field);
    content->addSubview(field);
    window->makeKeyAndOrderFront();
    field->setStringValue("words");
    ASSERT_TRUE(window->makeFirstResponder(field));
    ASSERT_TRUE(field->currentEditor());
    field->currentEditor()->setSelectedRange({1, 3});
    zq_deselectText(*field);
    EXPECT_EQ(field->currentEditor()->selectedRange(), (NSRange{0, 0}));
    zq_endEditing(*field);
    EXPECT_EQ(window->firstResponder(), window);
}

TEST_F(ControlExtensionTest, ControllersTakeChildren) {
    const auto parent = makeObject<NSViewController>();
    content->addSubview(parent->view());
    parent->view()->setFrame(CGRectMake(10, 10, 200, 100));
    const auto child = makeObject<NSViewController>();
    zq_addChild(*parent, child);
    window->layoutIfNeeded();
    EXPECT_EQ(parent->children().size(), 1U);
    EXPECT_EQ(child->view()->frame(), CGRectMake(0, 0, 200, 100));
    zq_removeChild(*parent, child);
    EXPECT_TRUE(parent->children().empty());
    EXPECT_FALSE(child->view()->superview());

    const auto placed = makeObject<NSViewController>();
    zq_addChild(*parent, placed, [&] { placed->view()->setFrame(CGRectMake(5, 5, 10, 10)); });
    window->layoutIfNeeded();
    EXPECT_EQ(placed->view()->frame(), CGRectMake(5, 5, 10, 10));
}

TEST_F(ControlExtensionTest, ViewsComeFromTheNibOfTheirName) {
    EXPECT_FALSE(zq_loadFromNib<NibView>());
    NSNib::registerNib("NibView", [](const auto&) {
        return std::vector<std::shared_ptr<NSObject>>{makeObject<NSView>(), makeObject<NibView>()};
    });
    const auto view = zq_loadFromNib<NibView>();
    EXPECT_TRUE(view);
    EXPECT_NE(zq_loadFromNib<NibView>(), view) << "new with each call";
    NSNib::registerNib(
        "NibView", [](const auto&) { return std::vector<std::shared_ptr<NSObject>>{makeObject<NSView>()}; });
    EXPECT_FALSE(zq_loadFromNib<NibView>());
    NSNib::registerNib("NibView", {});
    EXPECT_FALSE(zq_loadFromNib<NibView>());
}

TEST_F(ControlExtensionTest, ALayoutGroupMovesViewsInItsDuration) {
    const auto view = makeObject<NSView>(CGRectMake(0, 0, 10, 10));
    content->addSubview(view);
    ui.turn();
    zq_animationGroupLayout(*view, 0.4, [&] { view->setFrame(CGRectMake(100, 0, 10, 10)); });
    EXPECT_EQ(view->frame().origin.x, 100);
    ui.advance(0.2);
    const CGFloat halfway = view->layer()->presentation().frame.origin.x;
    EXPECT_GT(halfway, 0);
    EXPECT_LT(halfway, 100);
    ui.advance(0.2);
    EXPECT_EQ(view->layer()->presentation().frame.origin.x, 100);
}

}  // namespace
}  // namespace zqcore
