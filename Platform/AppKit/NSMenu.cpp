#include "Platform/AppKit/NSMenu.h"

#include <algorithm>

#include "Platform/AppKit/NSApplication.h"

namespace zqcore::platform {

void NSMenu::insertItem(const std::shared_ptr<NSMenuItem>& item, std::size_t index) {
    if (!item) return;
    std::erase(items_, item);
    items_.insert(items_.begin() + static_cast<std::ptrdiff_t>(std::min(index, items_.size())), item);
}

std::shared_ptr<NSMenuItem> NSMenu::itemWithTitle(std::string_view title) const {
    const auto found = std::ranges::find_if(items_, [&](const auto& item) { return item->title() == title; });
    return found == items_.end() ? nullptr : *found;
}

bool NSMenu::performActionForItem(std::size_t index) {
    if (index >= items_.size()) return false;
    const auto item = items_[index];
    return item->isEnabled() && item->action() &&
           NSApplication::shared()->sendAction(*item->action(), item->target(), item.get());
}

}  // namespace zqcore::platform
