#include "Classes/Core/Extension/AppKit/NSAlertExtension.h"

#include <utility>

#include "Platform/AppKit/NSButton.h"
#include "Platform/AppKit/NSWindow.h"

namespace zqcore {

void zq_show(const std::shared_ptr<NSWindow>& window, const std::optional<std::string>& title,
             const std::optional<std::string>& info, const std::optional<std::vector<std::string>>& buttons,
             std::function<void(NSAlertResponse)> completion) {
    const auto alert = makeObject<NSAlert>();
    alert->setAlertStyle(NSAlertStyle::warning);
    alert->setMessageText(title.value_or(std::string()));
    alert->setInformativeText(info.value_or(std::string()));
    if (buttons)
        for (const auto& button : *buttons) alert->addButtonWithTitle(button);
    if (window) {
        alert->beginSheetModalForWindow(window, std::move(completion));
        return;
    }
    const NSAlertResponse response = alert->runModal();
    if (completion) completion(response);
}

}  // namespace zqcore
