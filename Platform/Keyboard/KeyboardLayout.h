#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Platform/Base/Export.h"
#include "Platform/Keyboard/NSEventModifierFlags.h"

namespace zqcore::platform {

/// What each place on a keyboard types: a table from key code and modifiers to a character.
/// Threads: reading from any; a layout never changes. Lifetime: shared; who shows another keyboard gives
/// `Sauce` another layout. Failure: a place that types nothing, a dead key among them, has no character.
class ZQ_EXPORT KeyboardLayout {
  public:
    virtual ~KeyboardLayout() = default;

    /// The character at a place; of the modifiers only Shift and Option choose another.
    [[nodiscard]] virtual std::optional<std::string> character(int keyCode,
                                                               NSEventModifierFlags modifiers) const = 0;

    /// The QWERTY layout of an American keyboard, from a table of its own: no library and no file behind it.
    [[nodiscard]] static const std::shared_ptr<const KeyboardLayout>& qwerty();
    /// A layout of the system's keyboard data by name, "fr" or "de" with variant "neo". A null pointer for
    /// one that isn't known, or where that data isn't installed. Costs some milliseconds.
    [[nodiscard]] static std::shared_ptr<const KeyboardLayout> named(const std::string& layout,
                                                                     const std::string& variant = {});
};

}  // namespace zqcore::platform
