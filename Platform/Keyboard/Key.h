#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// A key by what it means, wherever the present keyboard layout puts it. Key codes are the platform's:
/// numbers of places on the keyboard, 0 to 127. Words that C++ keeps for itself end in `_`. Threads: a value.
/// Failure: none.
enum class Key : std::uint8_t {
    // clang-format off
    a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w, x, y, z,
    zero, one, two, three, four, five, six, seven, eight, nine,
    equal, minus, rightBracket, leftBracket, quote, semicolon, backslash, comma, slash, period, grave, section,
    atSign, caret, colon, underscore, yen,
    keypadDecimal, keypadMultiply, keypadPlus, keypadClear, keypadDivide, keypadEnter, keypadMinus, keypadEquals,
    keypadZero, keypadOne, keypadTwo, keypadThree, keypadFour, keypadFive, keypadSix, keypadSeven, keypadEight,
    keypadNine, keypadComma,
    return_, tab, space, delete_, escape, forwardDelete, help, home, end, pageUp, pageDown,
    leftArrow, rightArrow, downArrow, upArrow,
    f1, f2, f3, f4, f5, f6, f7, f8, f9, f10, f11, f12, f13, f14, f15, f16, f17, f18, f19, f20,
    eisu, kana,
    // clang-format on
};

/// All keys, in the order of the enumeration.
[[nodiscard]] ZQ_EXPORT std::span<const Key> allKeys() noexcept;

/// The code of the place where a QWERTY keyboard has the key. Three keys of Japanese keyboards (`atSign`,
/// `caret`, `colon`) share their places with others.
[[nodiscard]] ZQ_EXPORT int qwertyKeyCode(Key key) noexcept;

/// What the key at a place reads as when that doesn't depend on the layout ("↩", "F5", "Space"), or empty.
[[nodiscard]] ZQ_EXPORT std::string_view fixedTextForKeyCode(int keyCode) noexcept;

/// The character that names the key, by which it is looked for in a layout; empty for keys that have the same
/// place in every layout.
[[nodiscard]] ZQ_EXPORT std::string_view layoutCharacter(Key key) noexcept;

/// Whether it is one of F1 to F20.
[[nodiscard]] ZQ_EXPORT bool isFunctionKey(Key key) noexcept;

}  // namespace zqcore::platform
