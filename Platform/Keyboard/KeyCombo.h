#pragma once

#include <optional>
#include <string>

#include "Platform/Base/Export.h"
#include "Platform/Keyboard/Key.h"
#include "Platform/Keyboard/NSEventModifierFlags.h"

namespace zqcore::platform {

/// A key combination: a key with modifiers, or one modifier pressed twice. Of the modifiers Control, Option,
/// Shift and Command count.
/// Threads: a value. Failure: one that can't be is not made.
class ZQ_EXPORT KeyCombo final {
  public:
    /// A key with modifiers. Absent without a modifier, unless the key is one of F1 to F20.
    [[nodiscard]] static std::optional<KeyCombo> make(Key key, NSEventModifierFlags cocoaModifiers);
    /// One modifier, twice in a row. Absent for none or several.
    [[nodiscard]] static std::optional<KeyCombo> makeDoubled(NSEventModifierFlags doubledCocoaModifiers);

    [[nodiscard]] Key key() const noexcept { return key_; }
    [[nodiscard]] NSEventModifierFlags modifiers() const noexcept { return modifiers_; }
    [[nodiscard]] bool doubledModifiers() const noexcept { return doubledModifiers_; }

    /// The key's text in the present layout, without the modifiers; empty for a doubled modifier.
    [[nodiscard]] std::string keyEquivalent() const;
    /// One symbol for each modifier, in the order "⌃⌥⇧⌘".
    [[nodiscard]] std::string keyEquivalentModifierMaskString() const;

    friend bool operator==(const KeyCombo&, const KeyCombo&) = default;

  private:
    KeyCombo(Key key, NSEventModifierFlags modifiers, bool doubled) noexcept
        : key_(key), modifiers_(modifiers), doubledModifiers_(doubled) {}

    Key key_;
    NSEventModifierFlags modifiers_;
    bool doubledModifiers_;
};

}  // namespace zqcore::platform
