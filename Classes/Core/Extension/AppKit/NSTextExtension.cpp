#include "Classes/Core/Extension/AppKit/NSTextExtension.h"

#include <optional>

#include "Platform/AppKit/NSText.h"
#include "Platform/AppKit/NSTextField.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Foundation/Text/Utf16.h"

namespace zqcore {

void zq_deselectText(NSTextField& field) {
    if (const auto editor = field.currentEditor()) editor->setSelectedRange({0, 0});
}

void zq_endEditing(NSTextField& field) {
    if (const auto window = field.window()) window->makeFirstResponder(nullptr);
}

std::string zq_selectedText(const NSTextView& view) {
    const std::u16string text = toUTF16(view.string());
    if (text.empty()) return {};
    std::optional<std::u16string> selected;
    for (const auto& [location, length] : view.selectedRanges()) {
        if (location > text.size() || length > text.size() - location) continue;
        if (selected) {
            *selected += u'\n';
        } else {
            selected.emplace();
        }
        selected->append(text, location, length);
    }
    return fromUTF16(selected.value_or(std::u16string()));
}

}  // namespace zqcore
