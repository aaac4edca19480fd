#include "Platform/Layout/NSLayoutConstraint.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

#include "Platform/Base/NSLog.h"

namespace zqcore::platform {
namespace {

const char* nameOf(NSLayoutAttribute attribute) {
    switch (attribute) {
        case NSLayoutAttribute::left:
            return "left";
        case NSLayoutAttribute::right:
            return "right";
        case NSLayoutAttribute::top:
            return "top";
        case NSLayoutAttribute::bottom:
            return "bottom";
        case NSLayoutAttribute::width:
            return "width";
        case NSLayoutAttribute::height:
            return "height";
        case NSLayoutAttribute::centerX:
            return "centerX";
        case NSLayoutAttribute::centerY:
            return "centerY";
        case NSLayoutAttribute::notAnAttribute:
            break;
    }
    return "none";
}

bool isSize(NSLayoutAttribute attribute) {
    return attribute == NSLayoutAttribute::width || attribute == NSLayoutAttribute::height;
}

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.10g", value);
    return text;
}

std::uint64_t nextAge() {
    static std::uint64_t last = 0;
    return ++last;
}

}  // namespace

std::shared_ptr<NSLayoutConstraint> NSLayoutConstraint::make(LayoutItem& first, NSLayoutAttribute attribute,
                                                             NSLayoutRelation relation, LayoutItem* second,
                                                             NSLayoutAttribute secondAttribute,
                                                             CGFloat constant) {
    return makeObject<NSLayoutConstraint>(first, attribute, relation, second, secondAttribute, constant);
}

NSLayoutConstraint::NSLayoutConstraint(LayoutItem& first, NSLayoutAttribute attribute,
                                       NSLayoutRelation relation, LayoutItem* second,
                                       NSLayoutAttribute secondAttribute, CGFloat constant)
    : first_(first.self_),
      second_(second ? second->self_ : nullptr),
      firstAttribute_(attribute),
      secondAttribute_(second ? secondAttribute : NSLayoutAttribute::notAnAttribute),
      relation_(relation),
      constant_(constant) {}

NSLayoutConstraint::~NSLayoutConstraint() = default;

void NSLayoutConstraint::setConstant(CGFloat constant) {
    if (constant == constant_) return;
    constant_ = constant;
    if (holder_) holder_->markStale(LayoutItem::Stale::constants);
}

void NSLayoutConstraint::setPriority(NSLayoutPriority priority) {
    const NSLayoutPriority limited = priority > 0 ? std::min(priority, NSLayoutPriorityRequired) : 0;
    if (limited == priority_) return;
    priority_ = limited;
    if (holder_) holder_->markStale(LayoutItem::Stale::structure);
}

void NSLayoutConstraint::setActive(bool active) {
    if (active == isActive()) return;
    if (active) {
        activate();
    } else {
        deactivate();
    }
}

void NSLayoutConstraint::activateConstraints(
    const std::vector<std::shared_ptr<NSLayoutConstraint>>& constraints) {
    for (const auto& constraint : constraints) constraint->setActive(true);
}

void NSLayoutConstraint::deactivateConstraints(
    const std::vector<std::shared_ptr<NSLayoutConstraint>>& constraints) {
    for (const auto& constraint : constraints) constraint->setActive(false);
}

// The lowest item that has both sides in its subtree, itself included; null if there is none.
LayoutItem* NSLayoutConstraint::commonSuperitem() const {
    LayoutItem* const first = firstItem();
    if (!second_) return isSize(firstAttribute_) ? first : nullptr;
    LayoutItem* const second = secondItem();
    if (!first || !second) return nullptr;
    for (LayoutItem* above = first; above; above = above->layoutSuperitem()) {
        for (LayoutItem* other = second; other; other = other->layoutSuperitem()) {
            if (above == other) return above;
        }
    }
    return nullptr;
}

void NSLayoutConstraint::activate() {
    LayoutItem* const holder = commonSuperitem();
    if (!holder) {
        NSLog(description() + " can't become active: its items share no view");
        return;
    }
    holder_ = holder;
    age_ = nextAge();
    holder->held_.emplace(age_, std::static_pointer_cast<NSLayoutConstraint>(shared_from_this()));
    for (LayoutItem* item : {firstItem(), secondItem(), holder}) {
        if (item) item->mentions_.insert(this);
    }
    holder->markStale(LayoutItem::Stale::structure);
}

void NSLayoutConstraint::deactivate() {
    if (LayoutItem* const holder = letGo()) holder->markStale(LayoutItem::Stale::structure);
}

// Leaves the items' lists and gives who held it; whoever calls keeps no use of `this` after that.
LayoutItem* NSLayoutConstraint::letGo() {
    LayoutItem* const holder = std::exchange(holder_, nullptr);
    if (!holder) return nullptr;
    const auto held = holder->held_.find(age_);
    const std::shared_ptr<NSLayoutConstraint> kept = std::move(held->second);
    holder->held_.erase(held);
    for (const auto& side : {first_, second_}) {
        if (side && *side) (*side)->mentions_.erase(this);
    }
    holder->mentions_.erase(this);
    return holder;
}

std::string NSLayoutConstraint::description() const {
    const auto side = [](const LayoutItem* item, NSLayoutAttribute attribute) {
        return "<" + (item ? item->layoutDescription() : std::string("gone")) + ">." + nameOf(attribute);
    };
    std::string text = side(firstItem(), firstAttribute_);
    text += relation_ == NSLayoutRelation::equal             ? " == "
            : relation_ == NSLayoutRelation::lessThanOrEqual ? " <= "
                                                             : " >= ";
    if (second_) {
        text += side(secondItem(), secondAttribute_);
        if (constant_ != 0) text += (constant_ < 0 ? " - " : " + ") + number(std::abs(constant_));
    } else {
        text += number(constant_);
    }
    if (priority_ < NSLayoutPriorityRequired) text += " @ " + number(priority_);
    return text;
}

}  // namespace zqcore::platform
