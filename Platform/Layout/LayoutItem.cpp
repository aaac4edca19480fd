#include "Platform/Layout/LayoutItem.h"

#include <algorithm>
#include <utility>

#include "Platform/Layout/ConstraintMaker.h"
#include "Platform/Layout/LayoutEngine.h"
#include "Platform/Layout/NSLayoutConstraint.h"

namespace zqcore::platform {

LayoutItem::LayoutItem() : self_(std::make_shared<LayoutItem*>(this)) {}

LayoutItem::~LayoutItem() { endLayout(); }

void LayoutItem::endLayout() {
    *self_ = nullptr;
    for (NSLayoutConstraint* constraint : std::exchange(mentions_, {})) constraint->deactivate();
}

CGSize LayoutItem::intrinsicContentSize() const { return {NSViewNoIntrinsicMetric, NSViewNoIntrinsicMetric}; }

std::string LayoutItem::layoutDescription() const { return "item"; }

void LayoutItem::setTranslatesAutoresizingMaskIntoConstraints(bool translates) {
    if (translates == translates_) return;
    translates_ = translates;
    markStale(Stale::structure);
}

NSLayoutPriority LayoutItem::contentHuggingPriority(NSLayoutConstraintOrientation axis) const noexcept {
    return hugging_[static_cast<std::size_t>(axis)];
}

void LayoutItem::setContentHuggingPriority(NSLayoutPriority priority, NSLayoutConstraintOrientation axis) {
    hugging_[static_cast<std::size_t>(axis)] = priority;
    markStale(Stale::structure);
}

NSLayoutPriority LayoutItem::contentCompressionResistancePriority(
    NSLayoutConstraintOrientation axis) const noexcept {
    return resistance_[static_cast<std::size_t>(axis)];
}

void LayoutItem::setContentCompressionResistancePriority(NSLayoutPriority priority,
                                                         NSLayoutConstraintOrientation axis) {
    resistance_[static_cast<std::size_t>(axis)] = priority;
    markStale(Stale::structure);
}

void LayoutItem::invalidateIntrinsicContentSize() {
    contentSize_.reset();
    markStale(Stale::constants);
}

CGSize LayoutItem::contentSize() {
    if (!contentSize_) contentSize_ = intrinsicContentSize();
    return *contentSize_;
}

std::vector<std::shared_ptr<NSLayoutConstraint>> LayoutItem::constraints() const {
    std::vector<std::shared_ptr<NSLayoutConstraint>> all;
    all.reserve(held_.size());
    for (const auto& [age, constraint] : held_) all.push_back(constraint);
    return all;
}

bool LayoutItem::needsConstraintPass() const {
    return const_cast<LayoutItem*>(this)->layoutRoot().stale_ != Stale::no;
}

LayoutItem& LayoutItem::layoutRoot() {
    LayoutItem* item = this;
    while (LayoutItem* above = item->layoutSuperitem()) item = above;
    return *item;
}

void LayoutItem::markStale(Stale how) {
    if (!*self_) return;  // ending: its tree can't be asked any more
    LayoutItem& root = layoutRoot();
    root.stale_ = std::max(root.stale_, how);
    if (root.engine_) root.engine_->forgetFitted();
    layoutDidBecomeStale();
}

void LayoutItem::didJoinSuperitem() {
    engine_.reset();
    markStale(Stale::structure);
}

void LayoutItem::willLeaveSuperitem() {
    // What crosses the border is held by an item outside.
    const std::function<void(LayoutItem&)> cut = [&](LayoutItem& item) {
        std::vector<NSLayoutConstraint*> crossing;
        for (NSLayoutConstraint* constraint : item.mentions_) {
            const LayoutItem* above = layoutSuperitem();
            while (above && above != constraint->holder_) above = above->layoutSuperitem();
            if (above) crossing.push_back(constraint);
        }
        for (NSLayoutConstraint* constraint : crossing) constraint->deactivate();
        item.forEachLayoutSubitem(cut);
    };
    cut(*this);
    markStale(Stale::structure);
    stale_ = Stale::structure;  // a root of its own from now on
}

void LayoutItem::frameDidChangeOutsideLayout() {
    LayoutItem& root = layoutRoot();
    if (!translates_ && root.engine_ && root.engine_->isWritingFrames()) return;
    root.stale_ = std::max(root.stale_, Stale::constants);
}

}  // namespace zqcore::platform
