#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {

class LayoutEngine;
class NSLayoutConstraint;
class MadeConstraint;

/// 1000 is required; a lower number yields to every higher one, however many it has on its side.
using NSLayoutPriority = double;
inline constexpr NSLayoutPriority NSLayoutPriorityRequired = 1000;
inline constexpr NSLayoutPriority NSLayoutPriorityDefaultHigh = 750;
inline constexpr NSLayoutPriority NSLayoutPriorityDefaultLow = 250;
inline constexpr NSLayoutPriority NSLayoutPriorityFittingSizeCompression = 50;

enum class NSLayoutConstraintOrientation { horizontal = 0, vertical = 1 };

/// The side of `intrinsicContentSize` that a view has no opinion about.
inline constexpr CGFloat NSViewNoIntrinsicMetric = -1;

/// What constraints place: a view, seen from its layout alone. A view inherits it and tells its tree, its
/// frame and its own size; constraints, priorities and the solver are kept here.
/// Units: points, y growing downwards from the superitem's upper edge, whatever the view's own sense.
/// Threads: main. Lifetime: an item that ends takes the constraints that name it with it.
class ZQ_EXPORT LayoutItem {
  public:
    LayoutItem();
    LayoutItem(const LayoutItem&) = delete;
    LayoutItem& operator=(const LayoutItem&) = delete;
    virtual ~LayoutItem();

    /// Whose interior the frame lies in; null for a root.
    [[nodiscard]] virtual LayoutItem* layoutSuperitem() const = 0;
    virtual void forEachLayoutSubitem(const std::function<void(LayoutItem&)>& body) const = 0;
    [[nodiscard]] virtual CGRect layoutFrame() const = 0;
    /// Called by a layout pass for each frame that changed, superitems first. A root gets its size only; its
    /// origin is the one it had.
    virtual void setLayoutFrame(const CGRect& frame) = 0;
    /// The size that the content asks for; a negative side means none. It is remembered until
    /// `invalidateIntrinsicContentSize`.
    [[nodiscard]] virtual CGSize intrinsicContentSize() const;
    /// What a line about a dropped constraint calls this item.
    [[nodiscard]] virtual std::string layoutDescription() const;

    /// While true (the default) the frame is what code set, and a constant to the solver.
    [[nodiscard]] bool translatesAutoresizingMaskIntoConstraints() const noexcept { return translates_; }
    void setTranslatesAutoresizingMaskIntoConstraints(bool translates);

    /// How strongly the item resists growing beyond its content (250) or shrinking below it (750).
    [[nodiscard]] NSLayoutPriority contentHuggingPriority(NSLayoutConstraintOrientation axis) const noexcept;
    void setContentHuggingPriority(NSLayoutPriority priority, NSLayoutConstraintOrientation axis);
    [[nodiscard]] NSLayoutPriority contentCompressionResistancePriority(
        NSLayoutConstraintOrientation axis) const noexcept;
    void setContentCompressionResistancePriority(NSLayoutPriority priority,
                                                 NSLayoutConstraintOrientation axis);
    /// Has the next pass ask for the content's size again.
    void invalidateIntrinsicContentSize();

    /// The active constraints that this item holds as the nearest common superitem of both sides, oldest
    /// first.
    [[nodiscard]] std::vector<std::shared_ptr<NSLayoutConstraint>> constraints() const;
    /// Whether a pass over this item's tree has something to solve again. Frames that code sets need
    /// `frameDidChangeOutsideLayout`.
    [[nodiscard]] bool needsConstraintPass() const;

  protected:
    /// To be called after the item was linked to its superitem.
    void didJoinSuperitem();
    /// To be called before the link is cut: ends every constraint between this item's subtree and the
    /// outside.
    void willLeaveSuperitem();
    /// To be called whenever the frame was set; sets by a layout pass are told apart.
    void frameDidChangeOutsideLayout();
    /// For a class whose superitem doesn't own it: to be called first in its destructor, while the tree can
    /// still be asked; it leaves the tree with its constraints.
    void endLayout();
    /// Called when something changed that asks for a layout pass of the tree.
    virtual void layoutDidBecomeStale() {}

  private:
    friend class LayoutEngine;
    friend class NSLayoutConstraint;
    friend class ConstraintMaker;
    friend class ConstraintView;

    enum class Stale : std::uint8_t { no, constants, structure };
    LayoutItem& layoutRoot();
    void markStale(Stale how);
    CGSize contentSize();

    // Constraints outlive their items; they find them through this, which reads null from the item's end on.
    std::shared_ptr<LayoutItem*> self_;
    std::map<std::uint64_t, std::shared_ptr<NSLayoutConstraint>> held_;  // by age
    std::unordered_set<NSLayoutConstraint*> mentions_;
    std::vector<std::shared_ptr<MadeConstraint>> made_;
    std::unique_ptr<LayoutEngine> engine_;  // of roots only
    std::optional<CGSize> contentSize_;
    std::array<NSLayoutPriority, 2> hugging_{NSLayoutPriorityDefaultLow, NSLayoutPriorityDefaultLow};
    std::array<NSLayoutPriority, 2> resistance_{NSLayoutPriorityDefaultHigh, NSLayoutPriorityDefaultHigh};
    bool translates_ = true;
    Stale stale_ = Stale::structure;  // read on roots
};

}  // namespace zqcore::platform
