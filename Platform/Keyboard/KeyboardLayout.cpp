#include "Platform/Keyboard/KeyboardLayout.h"

#include <string_view>

namespace zqcore::platform {

namespace {

struct Place {
    int code;
    std::string_view plain;
    std::string_view shifted;
};

// Letters are left out of the second column: Shift makes them capital.
constexpr Place kPlaces[] = {
    {0, "a", {}},   {1, "s", {}},   {2, "d", {}},    {3, "f", {}},   {4, "h", {}},   {5, "g", {}},
    {6, "z", {}},   {7, "x", {}},   {8, "c", {}},    {9, "v", {}},   {10, "§", "±"}, {11, "b", {}},
    {12, "q", {}},  {13, "w", {}},  {14, "e", {}},   {15, "r", {}},  {16, "y", {}},  {17, "t", {}},
    {18, "1", "!"}, {19, "2", "@"}, {20, "3", "#"},  {21, "4", "$"}, {22, "6", "^"}, {23, "5", "%"},
    {24, "=", "+"}, {25, "9", "("}, {26, "7", "&"},  {27, "-", "_"}, {28, "8", "*"}, {29, "0", ")"},
    {30, "]", "}"}, {31, "o", {}},  {32, "u", {}},   {33, "[", "{"}, {34, "i", {}},  {35, "p", {}},
    {37, "l", {}},  {38, "j", {}},  {39, "'", "\""}, {40, "k", {}},  {41, ";", ":"}, {42, "\\", "|"},
    {43, ",", "<"}, {44, "/", "?"}, {45, "n", {}},   {46, "m", {}},  {47, ".", ">"}, {50, "`", "~"},
    {65, ".", "."}, {67, "*", "*"}, {69, "+", "+"},  {75, "/", "/"}, {78, "-", "-"}, {81, "=", "="},
    {82, "0", "0"}, {83, "1", "1"}, {84, "2", "2"},  {85, "3", "3"}, {86, "4", "4"}, {87, "5", "5"},
    {88, "6", "6"}, {89, "7", "7"}, {91, "8", "8"},  {92, "9", "9"}, {93, "¥", "|"}, {94, "_", "_"},
    {95, ",", ","},
};

class QwertyLayout final : public KeyboardLayout {
  public:
    std::optional<std::string> character(int keyCode, NSEventModifierFlags modifiers) const override {
        const bool shifted = (modifiers & NSEventModifierFlagShift) != 0;
        for (const Place& place : kPlaces) {
            if (place.code != keyCode) continue;
            if (!shifted) return std::string(place.plain);
            if (!place.shifted.empty()) return std::string(place.shifted);
            return std::string(1, static_cast<char>(place.plain.front() - 'a' + 'A'));
        }
        return std::nullopt;
    }
};

}  // namespace

const std::shared_ptr<const KeyboardLayout>& KeyboardLayout::qwerty() {
    static const auto* const kLayout =
        new std::shared_ptr<const KeyboardLayout>(std::make_shared<QwertyLayout>());
    return *kLayout;
}

}  // namespace zqcore::platform
