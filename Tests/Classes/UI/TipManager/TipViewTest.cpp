#include "Classes/UI/TipManager/TipView.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Classes/Core/Extension/AppKit/NSColorExtension.h"
#include "Classes/Core/Utility/AppKit/DarkModeManager.h"
#include "Classes/UI/TipManager/TipManager.h"
#include "Platform/AppKit/NSImageView.h"
#include "Platform/AppKit/NSStackView.h"
#include "Platform/AppKit/NSTextField.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSFont.h"
#include "Platform/Graphics/NSShadow.h"
#include "Platform/Keyboard/Sauce.h"
#include "Platform/QuartzCore/CALayer.h"
#include "TestKit/UI/HeadlessApplication.h"

namespace zqcore {
namespace {

constexpr NSEventModifierFlags kCommandShift = NSEventModifierFlagCommand | NSEventModifierFlagShift;

std::shared_ptr<NSTextField> labelIn(const std::shared_ptr<NSView>& view) {
    if (auto label = std::dynamic_pointer_cast<NSTextField>(view)) return label;
    for (const auto& subview : view->subviews())
        if (auto label = labelIn(subview)) return label;
    return nullptr;
}

std::string round(CGFloat value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

/// What a line shows, from left to right: texts, [caps], | bars and (mice), with the gaps between.
std::string describe(const NSStackView& line) {
    std::string text;
    CGFloat end = 0;
    for (const auto& view : line.arrangedSubviews()) {
        if (!text.empty()) text += " " + round(view->frame().origin.x - end) + " ";
        end = view->frame().origin.x + view->frame().size.width;
        if (std::dynamic_pointer_cast<NSImageView>(view)) {
            text += "(mouse)";
        } else if (const auto label = std::dynamic_pointer_cast<NSTextField>(view)) {
            text += label->stringValue();
        } else if (const auto capLabel = labelIn(view)) {
            text += "[" + capLabel->stringValue() + "]";
        } else {
            text += "|";
        }
    }
    return text;
}

class TipViewTest : public testing::Test {
  protected:
    TipViewTest() {
        DarkModeManager::shared()->observeAgainForTesting();
        ui.turn();
        window->contentView()->addSubview(card);
        window->orderFront();
    }
    ~TipViewTest() override { Sauce::shared().setLayout(nullptr); }

    /// Shows the tip, the card at its own size.
    void show(const TipInfo& info) {
        card->update(info);
        card->setFrame({{20, 30}, card->fittingSize()});
        window->layoutIfNeeded();
    }
    std::string line(const TipTrigger& trigger) {
        const auto info = TipInfo::make();
        info->text = "T";
        info->trigger = trigger;
        show(*info);
        return describe(static_cast<NSStackView&>(*card->subviews().at(0)));
    }
    /// The distance of a view's upper edge from the card's.
    CGFloat topOf(const std::shared_ptr<NSView>& view) const {
        return card->frame().size.height - view->frame().origin.y - view->frame().size.height;
    }

    testkit::HeadlessApplication ui;
    std::shared_ptr<NSWindow> window = makeObject<NSWindow>(CGRectMake(100, 100, 600, 400));
    std::shared_ptr<TipView> card = makeObject<TipView>();
};

TEST_F(TipViewTest, OneLineIsAsWideAsItsText) {
    const auto info = TipInfo::make();
    info->text = "Translate";
    show(*info);
    ASSERT_EQ(card->subviews().size(), 1U);
    const auto& line = card->subviews().front();
    const auto label = labelIn(line);
    ASSERT_TRUE(label);
    const CGFloat width = label->intrinsicContentSize().width;
    EXPECT_EQ(card->frame().size, (CGSize{15 + width + 15, 9 + 20 + 9}));
    EXPECT_EQ(line->frame(), CGRectMake(15, 9, width, 20));
    EXPECT_EQ(label->font()->pointSize(), 12);
    EXPECT_EQ(label->font()->weight(), NSFontWeightRegular);
    EXPECT_TRUE(label->textColor()->isEqual(*NSColor::labelColor()));

    info->text = std::nullopt;
    info->rightText = "Right";
    show(*info);
    EXPECT_TRUE(card->subviews().empty()) << "without a first line there is none at all";
    info->text = "";
    show(*info);
    EXPECT_TRUE(card->subviews().empty());
}

TEST_F(TipViewTest, TwoTextsAreLinesOfTheTwoMouseButtons) {
    const auto info = TipInfo::make();
    info->text = "Translate";
    info->trigger = TipTrigger::texts({"Tab"});
    info->rightText = "Choose a language";
    show(*info);
    ASSERT_EQ(card->subviews().size(), 2U);
    const auto& upper = static_cast<NSStackView&>(*card->subviews()[0]);
    const auto& lower = static_cast<NSStackView&>(*card->subviews()[1]);
    EXPECT_EQ(describe(upper), "(mouse) 8 Translate 8 [Tab]");
    EXPECT_EQ(describe(lower), "(mouse) 8 Choose a language");
    for (const auto& line : card->subviews()) {
        EXPECT_EQ(line->frame().origin.x, 12);
        const auto mouse = std::dynamic_pointer_cast<NSImageView>(
            static_cast<NSStackView&>(*line).arrangedSubviews().front());
        ASSERT_TRUE(mouse);
        EXPECT_EQ(mouse->frame(), CGRectMake(0, 2, 16, 16));
        EXPECT_TRUE(mouse->image()) << "the library's own picture";
    }
    EXPECT_EQ(topOf(card->subviews()[0]), 9);
    EXPECT_EQ(topOf(card->subviews()[1]), 9 + 20 + 9);
    EXPECT_EQ(card->frame().size.height, 9 + 20 + 9 + 20 + 9);
    EXPECT_EQ(card->frame().size.width,
              12 + std::max(upper.frame().size.width, lower.frame().size.width) + 15);
}

TEST_F(TipViewTest, WindowActionsComeBelowARuleAndAHeading) {
    const auto info = TipInfo::make();
    info->text = "Translate";
    info->windowActions = {{"", TipTrigger::texts({"A"})},
                           {"Pin", TipTrigger::keyCombo(*KeyCombo::make(Key::p, NSEventModifierFlagCommand))},
                           {"", TipTrigger::texts({})},
                           {"Close this window", TipTrigger::key(Key::escape)}};
    show(*info);
    ASSERT_EQ(card->subviews().size(), 5U);
    const auto& views = card->subviews();
    const auto heading = std::dynamic_pointer_cast<NSTextField>(views[2]);
    ASSERT_TRUE(heading);
    EXPECT_EQ(heading->stringValue(), "窗口内快捷键");
    EXPECT_TRUE(heading->textColor()->isEqual(*NSColor::secondaryLabelColor()));
    EXPECT_EQ(heading->font()->pointSize(), 12);
    const CGFloat headingHeight = heading->intrinsicContentSize().height;
    const CGFloat width = card->frame().size.width;

    EXPECT_EQ(topOf(views[1]), 38);
    EXPECT_EQ(views[1]->frame().size, (CGSize{width - 30, 1}));
    EXPECT_EQ(views[1]->frame().origin.x, 15);
    EXPECT_EQ(views[1]->layer()->cornerRadius(), 0.5);
    EXPECT_EQ(topOf(views[2]), 48);
    EXPECT_EQ(topOf(views[3]), 48 + headingHeight + 9);
    EXPECT_EQ(describe(static_cast<NSStackView&>(*views[3])), "Pin 8 [⌘] 4 [P]");
    EXPECT_EQ(topOf(views[4]), 48 + headingHeight + 9 + 29);
    EXPECT_EQ(describe(static_cast<NSStackView&>(*views[4])), "Close this window 8 [⎋]");
    for (const int index : {0, 2, 3, 4}) EXPECT_EQ(views[index]->frame().origin.x, 15) << index;
    EXPECT_EQ(card->frame().size.height, 48 + headingHeight + 9 + 29 + 20 + 9);

    info->windowActions = {{"", TipTrigger::texts({"A"})}};
    show(*info);
    EXPECT_EQ(card->subviews().size(), 1U) << "without a line there is neither rule nor heading";
    info->windowActions.reset();
    show(*info);
    EXPECT_EQ(card->subviews().size(), 1U);
}

TEST_F(TipViewTest, TriggersBecomeCapsInGroups) {
    const auto combo = [](Key key, NSEventModifierFlags modifiers) {
        return TipTrigger::keyCombo(*KeyCombo::make(key, modifiers));
    };
    const auto doubled = TipTrigger::keyCombo(*KeyCombo::makeDoubled(NSEventModifierFlagCommand));
    const std::vector<std::pair<TipTrigger, std::string>> cases = {
        {combo(Key::a, kCommandShift), "T 8 [⇧] 4 [⌘] 4 [A]"},
        {combo(Key::space, NSEventModifierFlagOption), "T 8 [⌥] 4 [SPACE]"},
        {combo(Key::f5, 0), "T 8 [F5]"},
        {doubled, "T 8 [⌘ double tap]"},
        {TipTrigger::key(Key::z), "T 8 [Z]"},
        {TipTrigger::key(Key::return_), "T 8 [↩]"},
        {TipTrigger::texts({"", "A"}), "T 8 [A]"},
        {TipTrigger::texts({"Tab", "单击"}), "T 8 [Tab] 4 [单击]"},
        {TipTrigger::texts({}), "T"},
        {TipTrigger::composite({doubled, TipTrigger::key(Key::a), TipTrigger::texts({"B", "C"})}),
         "T 8 [⌘ double tap] 8 | 8 [A] 8 | 8 [B] 4 [C]"},
        {TipTrigger::composite({TipTrigger::composite({doubled}), TipTrigger::texts({""}), doubled}),
         "T 8 [⌘ double tap]"},
        {TipTrigger::composite({}), "T"},
    };
    for (const auto& [trigger, expected] : cases) EXPECT_EQ(line(trigger), expected);

    EXPECT_FALSE(card->generateTriggerViewGroups(std::nullopt));
    EXPECT_FALSE(card->generateTriggerViewGroups(TipTrigger::composite({TipTrigger::composite({doubled})})));
    EXPECT_FALSE(card->generateSingleTriggerView(TipTrigger::composite({doubled})));
    EXPECT_FALSE(card->generateSingleLine("", doubled));
    EXPECT_FALSE(card->generateTextContainerView(""));
}

TEST_F(TipViewTest, KeysReadAsThePresentLayoutHasThem) {
    const auto french = KeyboardLayout::named("fr");
    ASSERT_TRUE(french);
    Sauce::shared().setLayout(french);
    EXPECT_EQ(card->generateKeyText(Key::a), "a");
    EXPECT_EQ(card->generateKeyText(Key::one), "&") << "not there without Shift, so read at its QWERTY place";
    EXPECT_EQ(card->generateKeyText(Key::leftBracket), std::nullopt) << "a dead key there";
    EXPECT_EQ(line(TipTrigger::key(Key::leftBracket)), "T");
    EXPECT_EQ(line(TipTrigger::keyCombo(*KeyCombo::make(Key::leftBracket, NSEventModifierFlagCommand))), "T")
        << "no key, so no caps of its modifiers either";
}

TEST_F(TipViewTest, CapsAreSquareForOneCharacterAndCentreTheirText) {
    struct Case {
        const char* text;
        bool square;
        CGFloat offset;
    };
    const Case cases[] = {{"A", true, -0.5},    {"+", true, -1.5},  {"-", true, -1.5},
                          {"↩", true, 1.0},     {"翻", true, -0.5}, {"e\u0301", true, -0.5},
                          {"Tab", false, -0.5}, {"++", false, -0.5}};
    for (const auto& [text, square, offset] : cases) {
        const auto info = TipInfo::make();
        info->text = "T";
        info->trigger = TipTrigger::texts({text});
        show(*info);
        const auto cap = static_cast<NSStackView&>(*card->subviews().front()).arrangedSubviews().back();
        const auto label = labelIn(cap);
        ASSERT_TRUE(label) << text;
        const CGSize textSize = label->intrinsicContentSize();
        EXPECT_EQ(cap->frame().size, (CGSize{square ? 20 : 5 + textSize.width + 5, 20})) << text;
        EXPECT_EQ(label->frame().origin.x, square ? (20 - textSize.width) / 2 : 5) << text;
        // A negative offset moves up, so the label's lower edge is higher.
        EXPECT_EQ(label->frame().origin.y, (20 - label->frame().size.height) / 2 - offset) << text;
        EXPECT_EQ(cap->layer()->cornerRadius(), 4);
        EXPECT_EQ(cap->frame().origin.y, 0) << text;
    }
}

TEST_F(TipViewTest, TheLookFollowsTheAppearance) {
    const auto info = TipInfo::make();
    info->text = "T";
    info->trigger = TipTrigger::composite({TipTrigger::texts({"A"}), TipTrigger::texts({"B"})});
    info->windowActions = {{"Pin", TipTrigger::texts({"P"})}};
    show(*info);
    const auto layer = card->layer();
    EXPECT_EQ(layer->cornerRadius(), 6);
    EXPECT_EQ(layer->borderWidth(), 0.5);
    const auto shadow = card->shadow();
    ASSERT_TRUE(shadow);
    EXPECT_TRUE(shadow->shadowColor()->isEqual(*hexColor("#101010", 0.31)));
    EXPECT_EQ(shadow->shadowOffset(), (CGSize{0, -2}));
    EXPECT_EQ(shadow->shadowBlurRadius(), 4);

    const auto& line = static_cast<NSStackView&>(*card->subviews().front());
    const auto cap = line.arrangedSubviews()[1];
    const auto bar = line.arrangedSubviews()[2];
    const auto divider = card->subviews()[1];
    EXPECT_EQ(bar->frame().size, (CGSize{1, 12}));
    EXPECT_EQ(bar->frame().origin.y, 4);
    EXPECT_EQ(bar->layer()->cornerRadius(), 0.5);

    struct Colors {
        DisplayAppearance appearance;
        const char *background, *border, *rule, *cap;
    };
    for (const auto& [appearance, background, border, rule, capColor] :
         {Colors{DisplayAppearance::light, "#F9F9F9", "#DCDEE0", "#EFEFEF", "#E3E4E6"},
          Colors{DisplayAppearance::dark, "#252627", "#414243", "#313233", "#3C3E3F"},
          Colors{DisplayAppearance::light, "#F9F9F9", "#DCDEE0", "#EFEFEF", "#E3E4E6"}}) {
        ui.display().setAppearance(appearance);
        ui.turn();
        EXPECT_EQ(layer->backgroundColor(), hexColor(background)->cgColor()) << background;
        EXPECT_EQ(layer->borderColor(), hexColor(border)->cgColor()) << border;
        EXPECT_EQ(bar->layer()->backgroundColor(), hexColor(rule)->cgColor()) << rule;
        EXPECT_EQ(divider->layer()->backgroundColor(), hexColor(rule)->cgColor()) << rule;
        EXPECT_EQ(cap->layer()->backgroundColor(), hexColor(capColor)->cgColor()) << capColor;
    }
}

// The pixels that a person sees: the card's own colours at known places, in both appearances and at both
// scales. With ZQ_TIP_PICTURES set to a folder the pictures are kept there to be looked at.
TEST_F(TipViewTest, DrawsTheWholeCard) {
    const auto info = TipInfo::make();
    info->text = "翻译选中的文字";
    info->trigger =
        TipTrigger::composite({TipTrigger::keyCombo(*KeyCombo::make(Key::d, NSEventModifierFlagOption)),
                               TipTrigger::keyCombo(*KeyCombo::makeDoubled(NSEventModifierFlagCommand))});
    info->rightText = "Choose a language";
    info->rightTrigger = TipTrigger::key(Key::return_);
    info->windowActions = {
        {"固定窗口", TipTrigger::keyCombo(*KeyCombo::make(Key::p, kCommandShift))},
        {"Zoom in", TipTrigger::keyCombo(*KeyCombo::make(Key::equal, NSEventModifierFlagCommand))},
        {"Next page", TipTrigger::texts({"Tab", "+", "-"})}};
    for (const CGFloat scale : {1.0, 2.0}) {
        ui.display().setScreens({{{{0, 0}, {1440, 900}}, {{0, 0}, {1440, 876}}, scale}});
        for (const auto appearance : {DisplayAppearance::light, DisplayAppearance::dark}) {
            ui.display().setAppearance(appearance);
            ui.turn();
            const auto view = makeObject<NSView>(CGRectMake(280, 30, 40, 20));
            window->contentView()->addSubview(view);
            ui.display().movePointer({400, 140});
            TipManager::showTip(view, info);
            ui.turn();
            const auto number = TipManager::windowNumber();
            ASSERT_TRUE(number);
            const auto picture = ui.display().windowPicture(*number);
            ASSERT_TRUE(picture);
            const auto frame = ui.application().windowWithWindowNumber(*number)->frame();
            EXPECT_EQ(picture->width, std::lround(frame.size.width * scale));
            const auto pixel = [&](CGFloat x, CGFloat y) {
                return picture->pixel(static_cast<int>(x * scale), static_cast<int>(y * scale));
            };
            const bool dark = appearance == DisplayAppearance::dark;
            EXPECT_EQ(pixel(14, 14), dark ? 0xFF252627U : 0xFFF9F9F9U) << "card";
            EXPECT_EQ(pixel(1, 1) >> 24, 0U) << "the corner of the margin is clear";
            const unsigned shadow = pixel(frame.size.width / 2, frame.size.height - 8) >> 24;
            EXPECT_GT(shadow, 0U) << "the shadow falls below";
            EXPECT_GT(shadow, pixel(frame.size.width / 2, 7) >> 24) << "more than above";
            EXPECT_EQ(pixel(frame.size.width / 2, 10 + 9 + 20 + 9 + 20 + 9 + 0.5),
                      dark ? 0xFF313233U : 0xFFEFEFEFU)
                << "rule";
            if (const char* folder = std::getenv("ZQ_TIP_PICTURES")) {
                const auto path =
                    std::string(folder) + "/tip-" + (dark ? "dark" : "light") + "-" + round(scale) + ".png";
                EXPECT_TRUE(HeadlessDisplay::writePNG(*picture, path));
            }
            TipManager::close();
            view->removeFromSuperview();
        }
    }
}

}  // namespace
}  // namespace zqcore
