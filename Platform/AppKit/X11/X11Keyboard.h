#pragma once

#include <memory>
#include <string>

#include "Platform/AppKit/X11/X11Connection.h"
#include "Platform/Keyboard/KeyboardLayout.h"
#include "Platform/Keyboard/Linux/XkbKeyboardLayout.h"

namespace zqcore::platform {

/// The server's keyboard: its map, the group in force, and what a stroke of a key means. It gives `Sauce` the
/// layout at the start and at each change. Alt and the key of the third level are Option and the logo key is
/// Command, as their places on the keyboard are. Threads: main thread. Lifetime: of the display. Failure:
/// without the server's keyboard extension keys have codes and no text, and `layout` is null.
class X11Keyboard final {
  public:
    explicit X11Keyboard(X11Connection& connection);

    [[nodiscard]] const std::shared_ptr<const KeyboardLayout>& layout() const noexcept { return layout_; }
    /// Takes an event of the keyboard extension; false for any other.
    bool take(const xcb_generic_event_t& event);

    /// One key going down or up.
    struct Stroke {
        bool known = false;       ///< the platform has a code for it
        bool isModifier = false;  ///< Shift, Control and their like
        unsigned short keyCode = 0;
        NSEventModifierFlags flags = 0;  ///< with this stroke
        std::string characters;
        std::string plain;  ///< without the modifiers
    };
    /// `state` is the core protocol's mask before the stroke.
    [[nodiscard]] Stroke stroke(xcb_keycode_t code, unsigned state, bool down) const;
    /// The modifiers in the core protocol's mask.
    [[nodiscard]] static NSEventModifierFlags flags(unsigned state) noexcept;

  private:
    void load();
    void selectEvents() const;

    X11Connection& connection_;
    XkbContext context_;
    XkbKeymap keymap_;
    XkbState state_;
    std::shared_ptr<const KeyboardLayout> layout_;
    std::uint8_t firstEvent_ = 0;
    int device_ = -1;
    xkb_layout_index_t group_ = 0;
};

}  // namespace zqcore::platform
