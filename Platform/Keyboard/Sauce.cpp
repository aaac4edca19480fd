#include "Platform/Keyboard/Sauce.h"

#include <utility>

namespace zqcore::platform {

namespace {

constexpr int kPlaceCount = 128;

bool isOnKeypad(int keyCode) noexcept {
    for (int key = static_cast<int>(Key::keypadDecimal); key <= static_cast<int>(Key::keypadComma); ++key)
        if (qwertyKeyCode(static_cast<Key>(key)) == keyCode) return true;
    return false;
}

}  // namespace

Sauce& Sauce::shared() {
    static auto* const kShared = new Sauce;
    return *kShared;
}

Sauce::Sauce() { setLayout(nullptr); }

std::shared_ptr<const KeyboardLayout> Sauce::layout() const {
    const std::lock_guard lock(mutex_);
    return layout_;
}

void Sauce::setLayout(std::shared_ptr<const KeyboardLayout> layout) {
    if (!layout) layout = KeyboardLayout::qwerty();
    std::map<std::string, int, std::less<>> places;
    for (int code = 0; code < kPlaceCount; ++code) {
        if (isOnKeypad(code) || !fixedTextForKeyCode(code).empty()) continue;
        if (auto character = layout->character(code, 0)) places.try_emplace(std::move(*character), code);
    }
    const std::lock_guard lock(mutex_);
    layout_ = std::move(layout);
    places_ = std::move(places);
}

std::optional<int> Sauce::currentKeyCode(Key key) const {
    const auto character = layoutCharacter(key);
    if (character.empty()) return qwertyKeyCode(key);
    const std::lock_guard lock(mutex_);
    const auto place = places_.find(character);
    if (place == places_.end()) return std::nullopt;
    return place->second;
}

std::optional<std::string> Sauce::character(int keyCode, NSEventModifierFlags cocoaModifiers) const {
    if (const auto fixed = fixedTextForKeyCode(keyCode); !fixed.empty()) return std::string(fixed);
    return layout()->character(keyCode, cocoaModifiers);
}

std::optional<std::string> Sauce::text(Key key) const {
    return character(currentKeyCode(key).value_or(qwertyKeyCode(key)), 0);
}

}  // namespace zqcore::platform
