#include "Platform/AppKit/NSStackView.h"

#include <algorithm>
#include <utility>

#include "Platform/Layout/NSLayoutConstraint.h"

namespace zqcore::platform {

namespace {

using Attribute = NSLayoutAttribute;
using Relation = NSLayoutRelation;

// The names of both directions, along the stack and across it.
struct Directions {
    Attribute start, end;
    Attribute acrossStart, acrossEnd, acrossCentre, acrossSize;
};
constexpr Directions kHorizontal{Attribute::left,   Attribute::right,   Attribute::top,
                                 Attribute::bottom, Attribute::centerY, Attribute::height};
constexpr Directions kVertical{Attribute::top,   Attribute::bottom,  Attribute::left,
                               Attribute::right, Attribute::centerX, Attribute::width};

}  // namespace

std::shared_ptr<NSStackView> NSStackView::stackViewWithViews(
    const std::vector<std::shared_ptr<NSView>>& views) {
    auto stack = makeObject<NSStackView>();
    for (const auto& view : views) stack->addArrangedSubview(view);
    return stack;
}

void NSStackView::changed() { setNeedsUpdateConstraints(true); }

void NSStackView::setOrientation(NSUserInterfaceLayoutOrientation orientation) {
    orientation_ = orientation;
    changed();
}
void NSStackView::setSpacing(CGFloat spacing) {
    spacing_ = spacing;
    changed();
}
void NSStackView::setEdgeInsets(const NSEdgeInsets& insets) {
    insets_ = insets;
    changed();
}

void NSStackView::setCustomSpacing(CGFloat spacing, const std::shared_ptr<NSView>& afterView) {
    if (std::ranges::find(arranged_, afterView) == arranged_.end()) return;
    customSpacing_[afterView.get()] = spacing;
    changed();
}

CGFloat NSStackView::customSpacingAfterView(const std::shared_ptr<NSView>& view) const {
    const auto found = customSpacing_.find(view.get());
    return found == customSpacing_.end() ? spacing_ : found->second;
}

void NSStackView::addArrangedSubview(const std::shared_ptr<NSView>& view) {
    if (std::ranges::find(arranged_, view) == arranged_.end()) insertArrangedSubview(view, arranged_.size());
}

void NSStackView::insertArrangedSubview(const std::shared_ptr<NSView>& arranged, std::size_t index) {
    const auto view = arranged;  // a copy: it may be an element of the list
    if (!view || isDescendantOf(*view)) return;
    std::erase(arranged_, view);
    if (view->superview().get() != this) addSubview(view);
    view->setTranslatesAutoresizingMaskIntoConstraints(false);
    arranged_.insert(arranged_.begin() + static_cast<std::ptrdiff_t>(std::min(index, arranged_.size())),
                     view);
    changed();
}

void NSStackView::removeArrangedSubview(const std::shared_ptr<NSView>& arranged) {
    const auto view = arranged;  // a copy: it may be an element of the list
    if (std::erase(arranged_, view) == 0) return;
    customSpacing_.erase(view.get());
    changed();
}

void NSStackView::willRemoveSubview(NSView& view) {
    NSView::willRemoveSubview(view);
    std::erase_if(arranged_, [&](const auto& one) { return one.get() == &view; });
    customSpacing_.erase(&view);
    changed();
}

void NSStackView::subviewHiddenChanged(NSView& view) {
    NSView::subviewHiddenChanged(view);
    changed();
}

void NSStackView::updateConstraints() {
    NSView::updateConstraints();
    NSLayoutConstraint::deactivateConstraints(std::exchange(built_, {}));
    const bool horizontal = orientation_ == NSUserInterfaceLayoutOrientation::horizontal;
    const Directions& along = horizontal ? kHorizontal : kVertical;
    const auto add = [this](NSView& first, Attribute attribute, Relation relation, NSView* second,
                            Attribute secondAttribute, CGFloat constant, NSLayoutPriority priority) {
        auto made = NSLayoutConstraint::make(first, attribute, relation, second, secondAttribute, constant);
        made->setPriority(priority);
        built_.push_back(std::move(made));
    };
    const CGFloat startInset = horizontal ? insets_.left : insets_.top;
    const CGFloat endInset = horizontal ? insets_.right : insets_.bottom;
    const CGFloat acrossStartInset = horizontal ? insets_.top : insets_.left;
    const CGFloat acrossEndInset = horizontal ? insets_.bottom : insets_.right;
    NSView* last = nullptr;
    CGFloat gap = 0;
    for (const auto& view : arranged_) {
        if (view->isHidden()) continue;
        if (last) {
            add(*view, along.start, Relation::greaterThanOrEqual, last, along.end, gap,
                NSLayoutPriorityRequired);
            add(*view, along.start, Relation::equal, last, along.end, gap, NSLayoutPriorityDefaultHigh);
        } else {
            add(*view, along.start, Relation::equal, this, along.start, startInset, NSLayoutPriorityRequired);
        }
        add(*view, along.acrossCentre, Relation::equal, this, along.acrossCentre,
            (acrossStartInset - acrossEndInset) / 2, NSLayoutPriorityDefaultLow);
        add(*view, along.acrossStart, Relation::greaterThanOrEqual, this, along.acrossStart, acrossStartInset,
            NSLayoutPriorityRequired);
        add(*view, along.acrossEnd, Relation::lessThanOrEqual, this, along.acrossEnd, -acrossEndInset,
            NSLayoutPriorityRequired);
        last = view.get();
        gap = customSpacingAfterView(view);
    }
    if (last) {
        add(*last, along.end, Relation::lessThanOrEqual, this, along.end, -endInset,
            NSLayoutPriorityRequired);
        add(*last, along.end, Relation::equal, this, along.end, -endInset, NSLayoutPriorityDefaultLow);
    }
    // As small across as its views allow.
    add(*this, along.acrossSize, Relation::equal, nullptr, Attribute::notAnAttribute, 0,
        NSLayoutPriorityDefaultLow);
    NSLayoutConstraint::activateConstraints(built_);
}

}  // namespace zqcore::platform
