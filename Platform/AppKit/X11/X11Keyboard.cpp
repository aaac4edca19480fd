#include "Platform/AppKit/X11/X11Keyboard.h"

#include <xkbcommon/xkbcommon-x11.h>

#include <array>
#include <utility>

#include "Platform/Keyboard/EvdevKeyCodes.h"
#include "Platform/Keyboard/Sauce.h"

// The header has a field of a name that C++ keeps for itself.
#define explicit explicit_
#include <xcb/xkb.h>
#undef explicit

namespace zqcore::platform {

namespace {

constexpr int kEvdevOffset = 8;
constexpr unsigned short kCapsLock = 57;

struct ModifierPlace {
    unsigned short keyCode;
    NSEventModifierFlags flag;
};
constexpr ModifierPlace kModifiers[] = {
    {54, NSEventModifierFlagCommand}, {55, NSEventModifierFlagCommand}, {56, NSEventModifierFlagShift},
    {60, NSEventModifierFlagShift},   {58, NSEventModifierFlagOption},  {61, NSEventModifierFlagOption},
    {59, NSEventModifierFlagControl}, {62, NSEventModifierFlagControl}, {57, NSEventModifierFlagCapsLock},
};

NSEventModifierFlags modifierAt(unsigned short keyCode) noexcept {
    for (const ModifierPlace& place : kModifiers)
        if (place.keyCode == keyCode) return place.flag;
    return 0;
}

// The keyboard group in bits 13 and 14 of the core mask (X Keyboard Extension, "Compatibility").
constexpr xkb_layout_index_t groupOf(unsigned state) noexcept { return (state >> 13) & 3; }

}  // namespace

X11Keyboard::X11Keyboard(X11Connection& connection) : connection_(connection), context_(makeXkbContext()) {
    if (!context_ || !xkb_x11_setup_xkb_extension(
                         connection.get(), XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
                         XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, &firstEvent_, nullptr))
        return;
    device_ = xkb_x11_get_core_keyboard_device_id(connection.get());
    if (device_ < 0) return;
    selectEvents();
    // A key that is held then sends presses without releases between, so a repeat is told from a stroke.
    constexpr auto kRepeat = XCB_XKB_PER_CLIENT_FLAG_DETECTABLE_AUTO_REPEAT;
    xcb_discard_reply(connection.get(), xcb_xkb_per_client_flags(connection.get(), XCB_XKB_ID_USE_CORE_KBD,
                                                                 kRepeat, kRepeat, 0, 0, 0)
                                            .sequence);
    load();
}

// Of the state only the group: the modifiers change with every capital letter that is typed anywhere.
void X11Keyboard::selectEvents() const {
    constexpr std::uint16_t kEvents = XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY |
                                      XCB_XKB_EVENT_TYPE_STATE_NOTIFY;
    constexpr std::uint16_t kMapParts =
        XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS | XCB_XKB_MAP_PART_MODIFIER_MAP;
    xcb_xkb_select_events_details_t details{};
    details.affectNewKeyboard = details.newKeyboardDetails = XCB_XKB_NKN_DETAIL_KEYCODES;
    details.affectState = details.stateDetails = XCB_XKB_STATE_PART_GROUP_STATE;
    xcb_xkb_select_events_aux(connection_.get(), XCB_XKB_ID_USE_CORE_KBD, kEvents, 0, 0, kMapParts, kMapParts,
                              &details);
}

void X11Keyboard::load() {
    constexpr auto kFlags = XKB_KEYMAP_COMPILE_NO_FLAGS;
    XkbKeymap keymap(xkb_x11_keymap_new_from_device(context_.get(), connection_.get(), device_, kFlags));
    if (!keymap) return;
    XkbState state(xkb_x11_state_new_from_device(keymap.get(), connection_.get(), device_));
    if (!state) return;
    group_ = xkb_state_serialize_layout(state.get(), XKB_STATE_LAYOUT_EFFECTIVE);
    keymap_ = std::move(keymap);
    state_ = std::move(state);
    layout_ = makeKeyboardLayout(XkbKeymap(xkb_keymap_ref(keymap_.get())), group_);
    Sauce::shared().setLayout(layout_);
}

bool X11Keyboard::take(const xcb_generic_event_t& event) {
    if (device_ < 0 || (event.response_type & 0x7F) != firstEvent_) return false;
    const auto& notice = reinterpret_cast<const xcb_xkb_state_notify_event_t&>(event);
    if (notice.xkbType == XCB_XKB_STATE_NOTIFY) {
        if (!keymap_ || std::exchange(group_, notice.group) == notice.group) return true;
        layout_ = makeKeyboardLayout(XkbKeymap(xkb_keymap_ref(keymap_.get())), group_);
        Sauce::shared().setLayout(layout_);
    } else {
        load();
    }
    return true;
}

NSEventModifierFlags X11Keyboard::flags(unsigned state) noexcept {
    constexpr std::pair<unsigned, NSEventModifierFlags> kMasks[] = {
        {XCB_MOD_MASK_SHIFT, NSEventModifierFlagShift},
        {XCB_MOD_MASK_LOCK, NSEventModifierFlagCapsLock},
        {XCB_MOD_MASK_CONTROL, NSEventModifierFlagControl},
        {XCB_MOD_MASK_1, NSEventModifierFlagOption},
        {XCB_MOD_MASK_4, NSEventModifierFlagCommand},
        {XCB_MOD_MASK_5, NSEventModifierFlagOption},  // the third level of many layouts
    };
    NSEventModifierFlags flags = 0;
    for (const auto& [mask, flag] : kMasks)
        if ((state & mask) != 0) flags |= flag;
    return flags;
}

X11Keyboard::Stroke X11Keyboard::stroke(xcb_keycode_t code, unsigned state, bool down) const {
    Stroke stroke;
    if (const auto place = keyCodeForEvdevCode(code - kEvdevOffset)) {
        stroke.known = true;
        stroke.keyCode = static_cast<unsigned short>(*place);
    }
    stroke.flags = flags(state);
    if (const auto own = stroke.known ? modifierAt(stroke.keyCode) : 0; own != 0) {
        stroke.isModifier = true;
        // The mask is the one before the stroke. Caps Lock turns with its press and keeps with its release.
        if (stroke.keyCode == kCapsLock) {
            if (down) stroke.flags ^= own;
        } else {
            stroke.flags = down ? stroke.flags | own : stroke.flags & ~own;
        }
        return stroke;
    }
    if (!state_) return stroke;
    xkb_state_update_mask(state_.get(), state & 0xFF, 0, 0, 0, 0, groupOf(state));
    std::array<char, 64> text{};
    if (xkb_state_key_get_utf8(state_.get(), code, text.data(), text.size()) > 0)
        stroke.characters = text.data();
    if (stroke.known && layout_) stroke.plain = layout_->character(stroke.keyCode, 0).value_or("");
    if (stroke.plain.empty()) stroke.plain = stroke.characters;
    return stroke;
}

}  // namespace zqcore::platform
