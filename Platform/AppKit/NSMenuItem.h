#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Platform/Base/NSObject.h"
#include "Platform/Base/Selector.h"

namespace zqcore::platform {

/// An entry of a menu: a title, and an action on a target that is held weakly. Threads: main thread.
class ZQ_EXPORT NSMenuItem : public NSObject {
  public:
    explicit NSMenuItem(std::string title = {}) : title_(std::move(title)) {}

    [[nodiscard]] const std::string& title() const noexcept { return title_; }
    void setTitle(std::string title) { title_ = std::move(title); }
    /// True at first; a disabled one does nothing.
    [[nodiscard]] bool isEnabled() const noexcept { return enabled_; }
    void setEnabled(bool enabled) noexcept { enabled_ = enabled; }
    [[nodiscard]] std::shared_ptr<NSObject> target() const noexcept { return target_.lock(); }
    void setTarget(const std::shared_ptr<NSObject>& target) { target_ = target; }
    [[nodiscard]] const std::optional<Selector>& action() const noexcept { return action_; }
    void setAction(std::optional<Selector> action) { action_ = action; }

  private:
    std::string title_;
    std::weak_ptr<NSObject> target_;
    std::optional<Selector> action_;
    bool enabled_ = true;
};

}  // namespace zqcore::platform
