#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Platform/AppKit/NSMenuItem.h"

namespace zqcore::platform {

/// A list of entries, as a notice or a status icon offers them; whoever shows it calls
/// `performActionForItem`. Threads: main thread. Lifetime: holds its items. Failure: places past the end are
/// the end or nothing.
class ZQ_EXPORT NSMenu : public NSObject {
  public:
    explicit NSMenu(std::string title = {}) : title_(std::move(title)) {}

    [[nodiscard]] const std::string& title() const noexcept { return title_; }
    [[nodiscard]] const std::vector<std::shared_ptr<NSMenuItem>>& itemArray() const noexcept {
        return items_;
    }
    /// An item that is in the menu already moves.
    void addItem(const std::shared_ptr<NSMenuItem>& item) { insertItem(item, items_.size()); }
    void insertItem(const std::shared_ptr<NSMenuItem>& item, std::size_t index);
    void removeItem(const std::shared_ptr<NSMenuItem>& item) { std::erase(items_, item); }
    [[nodiscard]] std::shared_ptr<NSMenuItem> itemWithTitle(std::string_view title) const;
    /// Sends the item's action to its target, the item being the sender; false if nobody takes it or it is
    /// disabled.
    bool performActionForItem(std::size_t index);

  private:
    std::string title_;
    std::vector<std::shared_ptr<NSMenuItem>> items_;
};

}  // namespace zqcore::platform
