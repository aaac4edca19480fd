#pragma once

#include <functional>
#include <memory>

#include "Platform/Base/CGGeometry.h"

namespace zqcore::platform {

class NSTimer;

/// Moves a value that lives outside the layers, 60 times a second and exactly to its end: a window's alpha, a
/// clip view's origin. Duration and pace are those of the current animation context; a duration of 0 sets at
/// once. Main thread. Lifetime: runs until its end or until the handle goes.
class SteppedAnimation {
  public:
    /// `apply` gets the progress, 1 at the end.
    [[nodiscard]] static std::shared_ptr<SteppedAnimation> run(std::function<void(double)> apply);
    ~SteppedAnimation();

    struct Run;
    explicit SteppedAnimation(std::shared_ptr<Run> run);

  private:
    std::shared_ptr<Run> run_;
};

}  // namespace zqcore::platform
