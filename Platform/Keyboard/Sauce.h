#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "Platform/Base/Export.h"
#include "Platform/Keyboard/Key.h"
#include "Platform/Keyboard/KeyboardLayout.h"

namespace zqcore::platform {

/// The present keyboard layout: where a key lies, and what a place types.
/// Threads: any. Lifetime: the process. The layout is QWERTY until a display gives another. Failure: a key or
/// a character that the layout doesn't have is absent.
class ZQ_EXPORT Sauce final {
  public:
    [[nodiscard]] static Sauce& shared();
    Sauce(const Sauce&) = delete;
    Sauce& operator=(const Sauce&) = delete;

    /// The code of the place where the present layout has the key: the first place, by code, that types the
    /// key's character without modifiers. Keys with a text of their own and the keypad never move.
    [[nodiscard]] std::optional<int> currentKeyCode(Key key) const;
    /// What the place reads as with these modifiers: a text of its own as "↩" or "F5", else the layout's
    /// character.
    [[nodiscard]] std::optional<std::string> character(int keyCode,
                                                       NSEventModifierFlags cocoaModifiers) const;
    /// The key's text without modifiers, in the present layout. A key that the layout doesn't have is read at
    /// its place on a QWERTY keyboard.
    [[nodiscard]] std::optional<std::string> text(Key key) const;

    [[nodiscard]] std::shared_ptr<const KeyboardLayout> layout() const;
    /// A null pointer means QWERTY.
    void setLayout(std::shared_ptr<const KeyboardLayout> layout);

  private:
    Sauce();

    mutable std::mutex mutex_;
    std::shared_ptr<const KeyboardLayout> layout_;
    // The places of characters without modifiers, found once for each layout.
    std::map<std::string, int, std::less<>> places_;
};

}  // namespace zqcore::platform
