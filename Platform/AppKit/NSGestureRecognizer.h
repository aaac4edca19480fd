#pragma once

#include <memory>
#include <optional>

#include "Platform/Base/NSObject.h"
#include "Platform/Base/Selector.h"

namespace zqcore::platform {

/// What performs an action on a target, held weakly, when it recognises its gesture; the kinds of gesture are
/// subclasses. Threads: main thread.
class ZQ_EXPORT NSGestureRecognizer : public NSObject {
  public:
    [[nodiscard]] std::shared_ptr<NSObject> target() const noexcept { return target_.lock(); }
    void setTarget(const std::shared_ptr<NSObject>& target) { target_ = target; }
    [[nodiscard]] const std::optional<Selector>& action() const noexcept { return action_; }
    void setAction(std::optional<Selector> action) { action_ = action; }

  private:
    std::weak_ptr<NSObject> target_;
    std::optional<Selector> action_;
};

}  // namespace zqcore::platform
