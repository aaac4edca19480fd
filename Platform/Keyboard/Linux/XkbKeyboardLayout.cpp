#include "Platform/Keyboard/Linux/XkbKeyboardLayout.h"

#include <utility>

#include "Platform/Keyboard/EvdevKeyCodes.h"

namespace zqcore::platform {

namespace {

// An X key code is the kernel's plus 8 (X Keyboard Extension, "evdev" key codes).
constexpr int kEvdevOffset = 8;
// Without Num Lock the keypad's keys move the cursor; their digits are one level up.
constexpr int kFirstKeypadCode = 65;
constexpr int kLastKeypadCode = 95;

bool typesOneLevelUp(int keyCode) noexcept {
    constexpr int kYen = 93;
    constexpr int kUnderscore = 94;
    return keyCode >= kFirstKeypadCode && keyCode <= kLastKeypadCode && keyCode != kYen &&
           keyCode != kUnderscore;
}

class XkbKeyboardLayout final : public KeyboardLayout {
  public:
    XkbKeyboardLayout(XkbKeymap keymap, xkb_layout_index_t group)
        : keymap_(std::move(keymap)), group_(group) {}

    std::optional<std::string> character(int keyCode, NSEventModifierFlags modifiers) const override {
        const auto evdev = evdevCodeForKeyCode(keyCode);
        if (!evdev) return std::nullopt;
        const auto code = static_cast<xkb_keycode_t>(*evdev + kEvdevOffset);
        const auto groups = xkb_keymap_num_layouts_for_key(keymap_.get(), code);
        if (groups == 0) return std::nullopt;
        const auto group = group_ < groups ? group_ : 0;
        xkb_level_index_t level = 0;
        if (typesOneLevelUp(keyCode)) {
            level = 1;
        } else {
            if (modifiers & NSEventModifierFlagShift) level += 1;
            if (modifiers & NSEventModifierFlagOption) level += 2;
        }
        // Keys with fewer levels type the same with every modifier.
        if (level >= xkb_keymap_num_levels_for_key(keymap_.get(), code, group)) level = 0;
        return characterAt(code, group, level);
    }

  private:
    std::optional<std::string> characterAt(xkb_keycode_t code, xkb_layout_index_t group,
                                           xkb_level_index_t level) const {
        const xkb_keysym_t* symbols = nullptr;
        if (xkb_keymap_key_get_syms_by_level(keymap_.get(), code, group, level, &symbols) != 1)
            return std::nullopt;
        char text[8] = {};
        if (xkb_keysym_to_utf8(symbols[0], text, sizeof text) <= 1) return std::nullopt;
        // Return, Tab and their like type control characters, which nobody can read.
        const auto first = static_cast<unsigned char>(text[0]);
        if (first < 0x20 || first == 0x7f) return std::nullopt;
        return std::string(text);
    }

    XkbKeymap keymap_;
    xkb_layout_index_t group_;
};

}  // namespace

XkbContext makeXkbContext() noexcept {
    XkbContext context(xkb_context_new(XKB_CONTEXT_NO_FLAGS));
    if (context)
        xkb_context_set_log_fn(context.get(), [](xkb_context*, xkb_log_level, const char*, va_list) {});
    return context;
}

std::shared_ptr<const KeyboardLayout> makeKeyboardLayout(XkbKeymap keymap, xkb_layout_index_t group) {
    if (!keymap) return nullptr;
    return std::make_shared<XkbKeyboardLayout>(std::move(keymap), group);
}

std::shared_ptr<const KeyboardLayout> KeyboardLayout::named(const std::string& layout,
                                                            const std::string& variant) {
    const auto context = makeXkbContext();
    if (!context) return nullptr;
    xkb_rule_names names{};
    names.rules = "evdev";
    names.model = "pc105";
    names.layout = layout.c_str();
    names.variant = variant.c_str();
    names.options = "";
    return makeKeyboardLayout(
        XkbKeymap(xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS)));
}

}  // namespace zqcore::platform
