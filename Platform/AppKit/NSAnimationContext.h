#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

class CAMediaTimingFunction;

/// The settings under which changes animate. Groups nest; an inner one starts with the outer one's settings.
/// Time: seconds of `Clock::current()`, 0.25 at first. Threads: main thread.
/// Lifetime: the innermost group that is open. Failure: what a group's closure throws is caught, with one log
/// line, and the group ends.
class ZQ_EXPORT NSAnimationContext final {
  public:
    /// The innermost open group, or the settings outside of any.
    [[nodiscard]] static NSAnimationContext& current();
    /// Runs `changes` in a group of its own. `completion` comes on the main thread when the group's duration
    /// is over, whatever moved; with a duration of 0 at the next turn.
    static void runAnimationGroup(const std::function<void(NSAnimationContext&)>& changes,
                                  std::function<void()> completion = {});
    static void beginGrouping();
    static void endGrouping();

    [[nodiscard]] double duration() const noexcept { return duration_; }
    void setDuration(double seconds);
    [[nodiscard]] const std::shared_ptr<CAMediaTimingFunction>& timingFunction() const noexcept {
        return timing_;
    }
    void setTimingFunction(std::shared_ptr<CAMediaTimingFunction> function);
    [[nodiscard]] bool allowsImplicitAnimation() const noexcept { return implicit_; }
    void setAllowsImplicitAnimation(bool allows);
    void setCompletionHandler(std::function<void()> handler) { completion_ = std::move(handler); }

  private:
    double duration_ = 0.25;
    std::shared_ptr<CAMediaTimingFunction> timing_;
    bool implicit_ = false;
    std::function<void()> completion_;
};

}  // namespace zqcore::platform
