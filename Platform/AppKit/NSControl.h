#pragma once

#include <memory>
#include <optional>

#include "Platform/AppKit/NSView.h"
#include "Platform/Base/Selector.h"

namespace zqcore::platform {

class NSFont;

/// A view that performs an action on a target. Threads: main thread.
/// Lifetime: the target is held weakly. Failure: an action that throws costs one log line.
class ZQ_EXPORT NSControl : public NSView {
  public:
    using NSView::NSView;

    [[nodiscard]] std::shared_ptr<NSObject> target() const noexcept { return target_.lock(); }
    virtual void setTarget(const std::shared_ptr<NSObject>& target) { target_ = target; }
    [[nodiscard]] const std::optional<Selector>& action() const noexcept { return action_; }
    virtual void setAction(std::optional<Selector> action) { action_ = action; }
    /// Performs the action on the target, without one on the first taker in the responder chain. False if
    /// nobody takes it, or there is no action.
    bool sendAction(const std::optional<Selector>& action, const std::shared_ptr<NSObject>& target);

    [[nodiscard]] bool isEnabled() const noexcept { return enabled_; }
    virtual void setEnabled(bool enabled);
    [[nodiscard]] const std::shared_ptr<NSFont>& font() const;
    virtual void setFont(std::shared_ptr<NSFont> font);

    [[nodiscard]] bool accessibilityIsIgnored() const override { return false; }
    /// With full keyboard access each enabled control takes the focus.
    [[nodiscard]] bool acceptsFirstResponder() const override;

  private:
    std::weak_ptr<NSObject> target_;
    std::optional<Selector> action_;
    mutable std::shared_ptr<NSFont> font_;
    bool enabled_ = true;
};

}  // namespace zqcore::platform
