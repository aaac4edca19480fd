#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

class CAMediaTimingFunction;

/// How a change moves: for how long, and at which pace; a null pace is the default curve.
struct CAAnimationTerms {
    double duration = 0;
    std::shared_ptr<CAMediaTimingFunction> timingFunction;
};

/// The settings under which free layers animate. Transactions nest; an inner one inherits what it doesn't
/// set, disabled actions included. A change takes the settings of the moment at which it is made. Time:
/// seconds of `Clock::current()`. Threads: main. Lifetime: from `begin` to its `commit`; settings made
/// outside of any last until the next main-queue turn. Failure: a commit without begin does nothing.
class ZQ_EXPORT CATransaction final {
  public:
    CATransaction() = delete;

    static void begin();
    static void commit();

    /// 0.25 where none is set.
    [[nodiscard]] static double animationDuration();
    static void setAnimationDuration(double seconds);
    /// Null where none is set: the default curve.
    [[nodiscard]] static std::shared_ptr<CAMediaTimingFunction> animationTimingFunction();
    static void setAnimationTimingFunction(std::shared_ptr<CAMediaTimingFunction> function);
    [[nodiscard]] static bool disableActions();
    static void setDisableActions(bool disable);
    /// Runs `block` on the main queue when the innermost transaction's duration has passed since its commit,
    /// whatever moved.
    static void setCompletionBlock(std::move_only_function<void()> block);

    /// What the present settings do to a change; none when actions are disabled or last no time.
    [[nodiscard]] static std::optional<CAAnimationTerms> animationTerms();
    /// Runs `block` on the main queue when `seconds` have passed, or in its next turn for 0 or less: the end
    /// of a group.
    static void scheduleCompletion(double seconds, std::move_only_function<void()> block);
};

}  // namespace zqcore::platform
