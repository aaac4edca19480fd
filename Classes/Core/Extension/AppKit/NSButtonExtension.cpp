#include "Classes/Core/Extension/AppKit/NSButtonExtension.h"

#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSFont.h"

namespace zqcore {

bool isOn(const NSButton& button) { return button.state() == NSControlStateValue::on; }

void setIsOn(NSButton& button, bool isOn) {
    button.setState(isOn ? NSControlStateValue::on : NSControlStateValue::off);
}

void zq_update(NSButton& button, const std::optional<std::string>& title, const std::shared_ptr<NSFont>& font,
               const std::shared_ptr<NSColor>& textColor) {
    button.setTitle(title.value_or(std::string()));
    button.setFont(font);
    button.setContentTintColor(textColor);
}

}  // namespace zqcore
