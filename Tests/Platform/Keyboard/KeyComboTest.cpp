#include "Platform/Keyboard/KeyCombo.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "Platform/Keyboard/EvdevKeyCodes.h"
#include "Platform/Keyboard/Sauce.h"

namespace zqcore::platform {
namespace {

constexpr NSEventModifierFlags none = 0;
constexpr auto capsLock = NSEventModifierFlagCapsLock;
constexpr auto shift = NSEventModifierFlagShift;
constexpr auto control = NSEventModifierFlagControl;
constexpr auto option = NSEventModifierFlagOption;
constexpr auto command = NSEventModifierFlagCommand;
constexpr auto function = NSEventModifierFlagFunction;

class KeyComboTest : public ::testing::Test {
  protected:
    ~KeyComboTest() override { Sauce::shared().setLayout(nullptr); }
};

TEST_F(KeyComboTest, NeedsAModifierOrAFunctionKey) {
    EXPECT_FALSE(KeyCombo::make(Key::a, none));
    EXPECT_FALSE(KeyCombo::make(Key::a, capsLock | function))
        << "these two are no modifiers of a combination";
    EXPECT_FALSE(KeyCombo::make(Key::escape, none));
    for (const Key key : {Key::f1, Key::f12, Key::f20}) EXPECT_TRUE(KeyCombo::make(key, none));
    EXPECT_TRUE(KeyCombo::make(Key::a, shift));
    EXPECT_EQ(KeyCombo::make(Key::a, shift | capsLock), KeyCombo::make(Key::a, shift));

    EXPECT_FALSE(KeyCombo::makeDoubled(none));
    EXPECT_FALSE(KeyCombo::makeDoubled(function));
    EXPECT_FALSE(KeyCombo::makeDoubled(command | option));
    EXPECT_TRUE(KeyCombo::makeDoubled(command));
}

TEST_F(KeyComboTest, ReadsAsSymbolsInOrderAndTheKeyWithoutThem) {
    const auto all = KeyCombo::make(Key::one, command | shift | option | control);
    ASSERT_TRUE(all);
    EXPECT_EQ(all->keyEquivalentModifierMaskString(), "⌃⌥⇧⌘");
    EXPECT_EQ(all->keyEquivalent(), "1") << "Shift with a digit still reads as the digit";

    const auto doubled = KeyCombo::makeDoubled(option);
    ASSERT_TRUE(doubled);
    EXPECT_TRUE(doubled->doubledModifiers());
    EXPECT_EQ(doubled->keyEquivalentModifierMaskString(), "⌥");
    EXPECT_EQ(doubled->keyEquivalent(), "");
    EXPECT_EQ(KeyCombo::make(Key::f5, none)->keyEquivalentModifierMaskString(), "");
}

TEST_F(KeyComboTest, FixedTextsStandInEveryLayout) {
    const std::map<Key, std::string> texts = {
        {Key::return_, "↩"}, {Key::tab, "⇥"},       {Key::space, "Space"},     {Key::delete_, "⌫"},
        {Key::escape, "⎋"},  {Key::leftArrow, "←"}, {Key::forwardDelete, "⌦"}, {Key::rightArrow, "→"},
        {Key::upArrow, "↑"}, {Key::downArrow, "↓"}, {Key::home, "↖"},          {Key::end, "↘"},
        {Key::pageUp, "⇞"},  {Key::pageDown, "⇟"},  {Key::keypadClear, "⌧"},   {Key::keypadEnter, "⌅"},
        {Key::f1, "F1"},     {Key::f20, "F20"},     {Key::help, "?⃝"},          {Key::eisu, "英数"},
        {Key::kana, "かな"},
    };
    for (const auto& layout : {KeyboardLayout::qwerty(), KeyboardLayout::named("fr")}) {
        ASSERT_TRUE(layout);
        Sauce::shared().setLayout(layout);
        for (const auto& [key, text] : texts) EXPECT_EQ(Sauce::shared().text(key), text);
    }
}

TEST_F(KeyComboTest, QwertyReadsEveryKeyAtItsOwnPlace) {
    const std::set<Key> elsewhere = {Key::atSign, Key::caret, Key::colon};
    for (const Key key : allKeys()) {
        const auto code = Sauce::shared().currentKeyCode(key);
        if (elsewhere.contains(key)) {
            EXPECT_FALSE(code) << "typed with Shift only, so this layout has no such key";
            continue;
        }
        ASSERT_TRUE(code) << static_cast<int>(key);
        EXPECT_EQ(*code, qwertyKeyCode(key)) << static_cast<int>(key);
        EXPECT_TRUE(Sauce::shared().text(key)) << static_cast<int>(key);
    }
    EXPECT_EQ(Sauce::shared().text(Key::atSign), "[") << "read at the place where QWERTY would have it";
    EXPECT_EQ(Sauce::shared().text(Key::caret), "=");
    EXPECT_EQ(Sauce::shared().text(Key::colon), "'");
    EXPECT_EQ(Sauce::shared().character(0, shift), "A");
    EXPECT_EQ(Sauce::shared().character(19, shift), "@");
    EXPECT_EQ(Sauce::shared().character(63, none), std::nullopt);
    EXPECT_EQ(Sauce::shared().character(-1, none), std::nullopt);
}

TEST_F(KeyComboTest, NamedLayoutsMoveKeys) {
    const auto french = KeyboardLayout::named("fr");
    ASSERT_TRUE(french);
    Sauce::shared().setLayout(french);
    EXPECT_EQ(Sauce::shared().currentKeyCode(Key::a), 12);
    EXPECT_EQ(Sauce::shared().currentKeyCode(Key::q), 0);
    EXPECT_EQ(Sauce::shared().currentKeyCode(Key::m), 41);
    EXPECT_EQ(Sauce::shared().currentKeyCode(Key::one), std::nullopt) << "digits need Shift there";
    EXPECT_EQ(Sauce::shared().text(Key::one), "&") << "read at the QWERTY place in the French layout";
    EXPECT_EQ(Sauce::shared().character(18, shift), "1");
    EXPECT_EQ(Sauce::shared().character(14, option), "€");
    EXPECT_EQ(Sauce::shared().character(33, none), std::nullopt) << "a dead key types nothing by itself";
    EXPECT_EQ(Sauce::shared().text(Key::keypadSeven), "7");
    EXPECT_EQ(KeyCombo::make(Key::w, command)->keyEquivalent(), "w");

    const auto german = KeyboardLayout::named("de");
    ASSERT_TRUE(german);
    Sauce::shared().setLayout(german);
    EXPECT_EQ(Sauce::shared().currentKeyCode(Key::z), 16);
    EXPECT_EQ(Sauce::shared().character(41, none), "ö");
    EXPECT_EQ(Sauce::shared().text(Key::keypadDecimal), ",");

    const auto dvorak = KeyboardLayout::named("us", "dvorak");
    ASSERT_TRUE(dvorak);
    EXPECT_EQ(dvorak->character(1, none), "o");
    EXPECT_FALSE(KeyboardLayout::named("no-such-layout"));
    EXPECT_FALSE(KeyboardLayout::named("us", "no-such-variant"));
}

TEST_F(KeyComboTest, TheKernelsCodesLeadToTheSamePlaces) {
    const auto american = KeyboardLayout::named("us");
    ASSERT_TRUE(american);
    for (int code = 0; code < 128; ++code) {
        const auto evdev = evdevCodeForKeyCode(code);
        if (evdev) {
            EXPECT_EQ(keyCodeForEvdevCode(*evdev), code);
        }
        // Places that an American keyboard lacks aside, two tables from different sources must agree.
        if (code == 10 || code == 93 || code == 94 || code == 95) continue;
        if (!fixedTextForKeyCode(code).empty()) continue;
        for (const auto modifiers : {none, shift}) {
            if (american->character(code, modifiers) == std::nullopt) continue;
            EXPECT_EQ(american->character(code, modifiers),
                      KeyboardLayout::qwerty()->character(code, modifiers))
                << code;
        }
    }
    for (const Key key : allKeys()) EXPECT_TRUE(evdevCodeForKeyCode(qwertyKeyCode(key)));
    EXPECT_FALSE(keyCodeForEvdevCode(0));
}

}  // namespace
}  // namespace zqcore::platform
