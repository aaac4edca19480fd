#include "Platform/Keyboard/KeyCombo.h"

#include <bit>
#include <string_view>

#include "Platform/Keyboard/Sauce.h"

namespace zqcore::platform {

namespace {

struct Symbol {
    NSEventModifierFlags flag;
    std::string_view text;
};
constexpr Symbol kSymbols[] = {
    {NSEventModifierFlagControl, "⌃"},
    {NSEventModifierFlagOption, "⌥"},
    {NSEventModifierFlagShift, "⇧"},
    {NSEventModifierFlagCommand, "⌘"},
};
constexpr auto kCounted = NSEventModifierFlagControl | NSEventModifierFlagOption | NSEventModifierFlagShift |
                          NSEventModifierFlagCommand;

int count(NSEventModifierFlags flags) noexcept { return std::popcount(flags); }

}  // namespace

std::optional<KeyCombo> KeyCombo::make(Key key, NSEventModifierFlags cocoaModifiers) {
    const auto modifiers = cocoaModifiers & kCounted;
    if (count(modifiers) == 0 && !isFunctionKey(key)) return std::nullopt;
    return KeyCombo(key, modifiers, false);
}

std::optional<KeyCombo> KeyCombo::makeDoubled(NSEventModifierFlags doubledCocoaModifiers) {
    const auto modifiers = doubledCocoaModifiers & kCounted;
    if (count(modifiers) != 1) return std::nullopt;
    return KeyCombo(Key::a, modifiers, true);
}

std::string KeyCombo::keyEquivalent() const {
    if (doubledModifiers_) return {};
    return Sauce::shared().text(key_).value_or(std::string());
}

std::string KeyCombo::keyEquivalentModifierMaskString() const {
    std::string symbols;
    for (const auto& [flag, text] : kSymbols)
        if (modifiers_ & flag) symbols += text;
    return symbols;
}

}  // namespace zqcore::platform
