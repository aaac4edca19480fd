#include "Platform/AppKit/NSControl.h"

#include <utility>

#include "Platform/AppKit/NSApplication.h"
#include "Platform/Graphics/NSFont.h"

namespace zqcore::platform {

bool NSControl::sendAction(const std::optional<Selector>& action, const std::shared_ptr<NSObject>& target) {
    if (!action) return false;
    const auto held = shared_from_this();
    return NSApplication::shared()->sendAction(*action, target, this);
}

void NSControl::setEnabled(bool enabled) {
    enabled_ = enabled;
    setNeedsDisplay(true);
}

const std::shared_ptr<NSFont>& NSControl::font() const {
    if (!font_) font_ = NSFont::systemFontOfSize(NSFont::systemFontSize());
    return font_;
}

void NSControl::setFont(std::shared_ptr<NSFont> font) {
    font_ = std::move(font);
    invalidateIntrinsicContentSize();
    setNeedsDisplay(true);
}

bool NSControl::acceptsFirstResponder() const {
    return enabled_ && NSApplication::shared()->isFullKeyboardAccessEnabled();
}

}  // namespace zqcore::platform
