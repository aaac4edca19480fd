#pragma once

#include <cstdint>
#include <memory>
#include <set>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {

class LayoutItem;

/// Solves the constraints of a tree of items. Each root keeps one solver, which is edited while only
/// constants, frames and content sizes change and made anew when items, constraints or priorities do.
/// Threads: main. Lifetime: belongs to its root.
/// Failure: required constraints that can't all hold lose the newest one, with one line on standard error.
class ZQ_EXPORT LayoutEngine {
  public:
    /// Gives every item of `item`'s whole tree whose mask isn't translated its solved frame, superitems
    /// first; the root gets its solved size alone. What no constraint decides keeps its present value. Does
    /// nothing when nothing changed since the last pass.
    static void layout(LayoutItem& item);
    /// The smallest size that meets the constraints inside `item`'s subtree; never negative. The item's
    /// present frame and all that is outside play no part.
    [[nodiscard]] static CGSize fittingSize(LayoutItem& item);

    ~LayoutEngine();
    LayoutEngine(const LayoutEngine&) = delete;
    LayoutEngine& operator=(const LayoutEngine&) = delete;

    /// To be called when anything but a frame changed in the tree: what a fitting size was found with is of
    /// no more use then.
    void forgetFitted() noexcept;

    /// Whether a pass is just giving the items their frames.
    [[nodiscard]] bool isWritingFrames() const noexcept { return writing_; }

  private:
    struct System;

    LayoutEngine();
    bool update(LayoutItem& root);
    void writeFrames();

    std::unique_ptr<System> system_;
    std::unique_ptr<System> fitted_;    // of the last fitting size inside the tree, until something changes
    std::set<std::uint64_t> reported_;  // dropped constraints that were told of, by age
    bool writing_ = false;
};

}  // namespace zqcore::platform
