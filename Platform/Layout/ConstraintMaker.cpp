#include "Platform/Layout/ConstraintMaker.h"

#include <algorithm>
#include <utility>

namespace zqcore::platform {
namespace {

using enum NSLayoutAttribute;

CGFloat insetFor(NSLayoutAttribute attribute, const NSEdgeInsets& insets) {
    switch (attribute) {
        case left:
            return insets.left;
        case top:
            return insets.top;
        case right:
            return -insets.right;
        case bottom:
            return -insets.bottom;
        case width:
            return -(insets.left + insets.right);
        case height:
            return -(insets.top + insets.bottom);
        case centerX:
            return (insets.left - insets.right) / 2;
        case centerY:
            return (insets.top - insets.bottom) / 2;
        case notAnAttribute:
            break;
    }
    return 0;
}

bool isWidthOrHeight(NSLayoutAttribute attribute) { return attribute == width || attribute == height; }

bool saysTheSame(const NSLayoutConstraint& a, const NSLayoutConstraint& b) {
    return a.firstItem() == b.firstItem() && a.secondItem() == b.secondItem() &&
           a.firstAttribute() == b.firstAttribute() && a.secondAttribute() == b.secondAttribute() &&
           a.relation() == b.relation() && a.priority() == b.priority();
}

}  // namespace

// The handle

void MadeConstraint::updateOffset(CGFloat offset) {
    for (const auto& constraint : constraints_) constraint->setConstant(offset);
}

void MadeConstraint::updateInset(CGFloat inset) { updateInset(NSEdgeInsets{inset, inset, inset, inset}); }

void MadeConstraint::updateInset(const NSEdgeInsets& insets) {
    for (const auto& constraint : constraints_) {
        constraint->setConstant(insetFor(constraint->firstAttribute(), insets));
    }
}

void MadeConstraint::updatePriority(NSLayoutPriority priority) {
    for (const auto& constraint : constraints_) constraint->setPriority(priority);
}

void MadeConstraint::activate() { NSLayoutConstraint::activateConstraints(constraints_); }

void MadeConstraint::deactivate() { NSLayoutConstraint::deactivateConstraints(constraints_); }

bool MadeConstraint::isActive() const {
    return !constraints_.empty() &&
           std::all_of(constraints_.begin(), constraints_.end(),
                       [](const auto& constraint) { return constraint->isActive(); });
}

// The end of a sentence

ConstraintMakerEditable& ConstraintMakerEditable::offset(CGFloat offset) {
    made_->updateOffset(offset);
    return *this;
}

ConstraintMakerEditable& ConstraintMakerEditable::inset(CGFloat inset) {
    made_->updateInset(inset);
    return *this;
}

ConstraintMakerEditable& ConstraintMakerEditable::inset(const NSEdgeInsets& insets) {
    made_->updateInset(insets);
    return *this;
}

ConstraintMakerEditable& ConstraintMakerEditable::priority(NSLayoutPriority priority) {
    made_->updatePriority(priority);
    return *this;
}

// The middle

ConstraintMakerRelatable& ConstraintMakerRelatable::also(NSLayoutAttribute attribute) {
    attributes_.push_back(attribute);
    return *this;
}

ConstraintMakerEditable ConstraintMakerRelatable::relate(NSLayoutRelation relation,
                                                         const ConstraintTarget& other) {
    const auto made = std::make_shared<MadeConstraint>();
    for (std::size_t index = 0; index < attributes_.size(); ++index) {
        // One attribute of the other side serves all of this one's.
        const auto& theirs = other.attributes;
        const NSLayoutAttribute second = theirs.empty()       ? attributes_[index]
                                         : theirs.size() == 1 ? theirs.front()
                                                              : theirs[std::min(index, theirs.size() - 1)];
        made->constraints_.push_back(
            NSLayoutConstraint::make(maker_.item_, attributes_[index], relation, other.item, second));
    }
    maker_.made_.push_back(made);
    return ConstraintMakerEditable(made);
}

ConstraintMakerEditable ConstraintMakerRelatable::relate(NSLayoutRelation relation, CGSize numbers) {
    const auto made = std::make_shared<MadeConstraint>();
    for (const NSLayoutAttribute attribute : attributes_) {
        LayoutItem* const other = isWidthOrHeight(attribute) ? nullptr : maker_.item_.layoutSuperitem();
        made->constraints_.push_back(
            NSLayoutConstraint::make(maker_.item_, attribute, relation, other, attribute,
                                     isHorizontal(attribute) ? numbers.width : numbers.height));
    }
    maker_.made_.push_back(made);
    return ConstraintMakerEditable(made);
}

ConstraintMakerEditable ConstraintMakerRelatable::relateToSuperview(NSLayoutRelation relation) {
    return relate(relation, ConstraintTarget{maker_.item_.layoutSuperitem(), {}});
}

// The beginning

ConstraintMakerRelatable ConstraintMaker::begin(std::vector<NSLayoutAttribute> attributes) {
    return {*this, std::move(attributes)};
}

void ConstraintView::makeConstraints(const std::function<void(ConstraintMaker&)>& closure) const {
    item_.setTranslatesAutoresizingMaskIntoConstraints(false);
    ConstraintMaker maker(item_);
    closure(maker);
    for (const auto& made : maker.made_) {
        made->activate();
        item_.made_.push_back(made);
    }
}

void ConstraintView::remakeConstraints(const std::function<void(ConstraintMaker&)>& closure) const {
    removeConstraints();
    makeConstraints(closure);
}

void ConstraintView::updateConstraints(const std::function<void(ConstraintMaker&)>& closure) const {
    item_.setTranslatesAutoresizingMaskIntoConstraints(false);
    ConstraintMaker maker(item_);
    closure(maker);
    const auto existing = [this](const NSLayoutConstraint& wanted) -> NSLayoutConstraint* {
        for (const auto& made : item_.made_) {
            for (const auto& constraint : made->constraints_) {
                if (constraint->isActive() && saysTheSame(*constraint, wanted)) return constraint.get();
            }
        }
        return nullptr;
    };
    for (const auto& made : maker.made_) {
        bool isNew = false;
        for (auto& constraint : made->constraints_) {
            NSLayoutConstraint* const present = existing(*constraint);
            isNew = isNew || !present;
            if (!present) continue;
            present->setConstant(constraint->constant());
            constraint = std::static_pointer_cast<NSLayoutConstraint>(present->shared_from_this());
        }
        made->activate();
        if (isNew) item_.made_.push_back(made);
    }
}

void ConstraintView::removeConstraints() const {
    for (const auto& made : std::exchange(item_.made_, {})) made->deactivate();
}

}  // namespace zqcore::platform
