#pragma once

#include <xkbcommon/xkbcommon.h>

#include <memory>

#include "Platform/Keyboard/KeyboardLayout.h"

namespace zqcore::platform {

struct XkbDeleter {
    void operator()(xkb_context* context) const noexcept { xkb_context_unref(context); }
    void operator()(xkb_keymap* keymap) const noexcept { xkb_keymap_unref(keymap); }
    void operator()(xkb_state* state) const noexcept { xkb_state_unref(state); }
};
using XkbContext = std::unique_ptr<xkb_context, XkbDeleter>;
using XkbKeymap = std::unique_ptr<xkb_keymap, XkbDeleter>;
using XkbState = std::unique_ptr<xkb_state, XkbDeleter>;

/// A context that keeps its complaints to itself; null if there is no memory for one.
[[nodiscard]] XkbContext makeXkbContext() noexcept;

/// Group `group` of a compiled key map as a layout. Null for a null map.
[[nodiscard]] std::shared_ptr<const KeyboardLayout> makeKeyboardLayout(XkbKeymap keymap,
                                                                       xkb_layout_index_t group = 0);

}  // namespace zqcore::platform
