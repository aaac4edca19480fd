#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Platform/AppKit/NSButton.h"
#include "Platform/Base/Export.h"

namespace zqcore {

// Operations on buttons. Threads: main thread.

/// Whether the state is on; a mixed one is not.
[[nodiscard]] ZQ_EXPORT bool isOn(const NSButton& button);
ZQ_EXPORT void setIsOn(NSButton& button, bool isOn);

/// A new button, of a class below `NSButton` if asked, for an image that toggles: not bordered, scaled down
/// to fit.
template <class Button = NSButton>
[[nodiscard]] std::shared_ptr<Button> zq_imageButton() {
    auto button = makeObject<Button>();
    button->setBordered(false);
    button->setImageScaling(NSImageScaling::proportionallyDown);
    button->setBezelStyle(NSBezelStyle::regularSquare);
    button->setButtonType(NSButtonType::toggle);
    return button;
}

/// Sets title (none is empty), font and tint.
ZQ_EXPORT void zq_update(NSButton& button, const std::optional<std::string>& title,
                         const std::shared_ptr<NSFont>& font, const std::shared_ptr<NSColor>& textColor);

}  // namespace zqcore
