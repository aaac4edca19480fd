#include "Platform/Keyboard/Key.h"

#include <array>
#include <cstddef>
#include <utility>

namespace zqcore::platform {

namespace {

struct Row {
    Key key;
    std::uint8_t code;
    // One of the two is empty: keys with a text of their own aren't searched in layouts.
    std::string_view character;
    std::string_view fixedText;
};

constexpr Row kRows[] = {
    {Key::a, 0, "a", {}},
    {Key::b, 11, "b", {}},
    {Key::c, 8, "c", {}},
    {Key::d, 2, "d", {}},
    {Key::e, 14, "e", {}},
    {Key::f, 3, "f", {}},
    {Key::g, 5, "g", {}},
    {Key::h, 4, "h", {}},
    {Key::i, 34, "i", {}},
    {Key::j, 38, "j", {}},
    {Key::k, 40, "k", {}},
    {Key::l, 37, "l", {}},
    {Key::m, 46, "m", {}},
    {Key::n, 45, "n", {}},
    {Key::o, 31, "o", {}},
    {Key::p, 35, "p", {}},
    {Key::q, 12, "q", {}},
    {Key::r, 15, "r", {}},
    {Key::s, 1, "s", {}},
    {Key::t, 17, "t", {}},
    {Key::u, 32, "u", {}},
    {Key::v, 9, "v", {}},
    {Key::w, 13, "w", {}},
    {Key::x, 7, "x", {}},
    {Key::y, 16, "y", {}},
    {Key::z, 6, "z", {}},
    {Key::zero, 29, "0", {}},
    {Key::one, 18, "1", {}},
    {Key::two, 19, "2", {}},
    {Key::three, 20, "3", {}},
    {Key::four, 21, "4", {}},
    {Key::five, 23, "5", {}},
    {Key::six, 22, "6", {}},
    {Key::seven, 26, "7", {}},
    {Key::eight, 28, "8", {}},
    {Key::nine, 25, "9", {}},
    {Key::equal, 24, "=", {}},
    {Key::minus, 27, "-", {}},
    {Key::rightBracket, 30, "]", {}},
    {Key::leftBracket, 33, "[", {}},
    {Key::quote, 39, "'", {}},
    {Key::semicolon, 41, ";", {}},
    {Key::backslash, 42, "\\", {}},
    {Key::comma, 43, ",", {}},
    {Key::slash, 44, "/", {}},
    {Key::period, 47, ".", {}},
    {Key::grave, 50, "`", {}},
    {Key::section, 10, "§", {}},
    {Key::atSign, 33, "@", {}},
    {Key::caret, 24, "^", {}},
    {Key::colon, 39, ":", {}},
    {Key::underscore, 94, "_", {}},
    {Key::yen, 93, "¥", {}},
    // The keypad's keys have characters that a layout may change (the decimal one), but never move.
    {Key::keypadDecimal, 65, {}, {}},
    {Key::keypadMultiply, 67, {}, {}},
    {Key::keypadPlus, 69, {}, {}},
    {Key::keypadClear, 71, {}, "⌧"},
    {Key::keypadDivide, 75, {}, {}},
    {Key::keypadEnter, 76, {}, "⌅"},
    {Key::keypadMinus, 78, {}, {}},
    {Key::keypadEquals, 81, {}, {}},
    {Key::keypadZero, 82, {}, {}},
    {Key::keypadOne, 83, {}, {}},
    {Key::keypadTwo, 84, {}, {}},
    {Key::keypadThree, 85, {}, {}},
    {Key::keypadFour, 86, {}, {}},
    {Key::keypadFive, 87, {}, {}},
    {Key::keypadSix, 88, {}, {}},
    {Key::keypadSeven, 89, {}, {}},
    {Key::keypadEight, 91, {}, {}},
    {Key::keypadNine, 92, {}, {}},
    {Key::keypadComma, 95, {}, {}},
    {Key::return_, 36, {}, "↩"},
    {Key::tab, 48, {}, "⇥"},
    {Key::space, 49, {}, "Space"},
    {Key::delete_, 51, {}, "⌫"},
    {Key::escape, 53, {}, "⎋"},
    {Key::forwardDelete, 117, {}, "⌦"},
    {Key::help, 114, {}, "?⃝"},
    {Key::home, 115, {}, "↖"},
    {Key::end, 119, {}, "↘"},
    {Key::pageUp, 116, {}, "⇞"},
    {Key::pageDown, 121, {}, "⇟"},
    {Key::leftArrow, 123, {}, "←"},
    {Key::rightArrow, 124, {}, "→"},
    {Key::downArrow, 125, {}, "↓"},
    {Key::upArrow, 126, {}, "↑"},
    {Key::f1, 122, {}, "F1"},
    {Key::f2, 120, {}, "F2"},
    {Key::f3, 99, {}, "F3"},
    {Key::f4, 118, {}, "F4"},
    {Key::f5, 96, {}, "F5"},
    {Key::f6, 97, {}, "F6"},
    {Key::f7, 98, {}, "F7"},
    {Key::f8, 100, {}, "F8"},
    {Key::f9, 101, {}, "F9"},
    {Key::f10, 109, {}, "F10"},
    {Key::f11, 103, {}, "F11"},
    {Key::f12, 111, {}, "F12"},
    {Key::f13, 105, {}, "F13"},
    {Key::f14, 107, {}, "F14"},
    {Key::f15, 113, {}, "F15"},
    {Key::f16, 106, {}, "F16"},
    {Key::f17, 64, {}, "F17"},
    {Key::f18, 79, {}, "F18"},
    {Key::f19, 80, {}, "F19"},
    {Key::f20, 90, {}, "F20"},
    {Key::eisu, 102, {}, "英数"},
    {Key::kana, 104, {}, "かな"},
};
constexpr std::size_t kCount = std::size(kRows);
static_assert(kCount == static_cast<std::size_t>(Key::kana) + 1);

constexpr bool rowsAreInOrder() {
    for (std::size_t index = 0; index < kCount; ++index)
        if (static_cast<std::size_t>(kRows[index].key) != index) return false;
    return true;
}
static_assert(rowsAreInOrder());

constexpr auto kKeys = [] {
    std::array<Key, kCount> keys{};
    for (std::size_t index = 0; index < kCount; ++index) keys[index] = kRows[index].key;
    return keys;
}();

const Row& row(Key key) noexcept { return kRows[static_cast<std::size_t>(key) % kCount]; }

}  // namespace

std::span<const Key> allKeys() noexcept { return kKeys; }

int qwertyKeyCode(Key key) noexcept { return row(key).code; }

std::string_view fixedTextForKeyCode(int keyCode) noexcept {
    for (const Row& candidate : kRows)
        if (candidate.code == keyCode && !candidate.fixedText.empty()) return candidate.fixedText;
    return {};
}

std::string_view layoutCharacter(Key key) noexcept { return row(key).character; }

bool isFunctionKey(Key key) noexcept { return key >= Key::f1 && key <= Key::f20; }

}  // namespace zqcore::platform
