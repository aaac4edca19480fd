#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Base/NSObject.h"
#include "Platform/Layout/LayoutItem.h"

namespace zqcore::platform {

/// The attributes are what is seen: top, bottom and centre y grow downwards also where a view's own y grows
/// upwards.
enum class NSLayoutAttribute {
    notAnAttribute = 0,
    left = 1,
    right = 2,
    top = 3,
    bottom = 4,
    width = 7,
    height = 8,
    centerX = 9,
    centerY = 10,
};

[[nodiscard]] constexpr bool isHorizontal(NSLayoutAttribute attribute) noexcept {
    return attribute == NSLayoutAttribute::left || attribute == NSLayoutAttribute::right ||
           attribute == NSLayoutAttribute::width || attribute == NSLayoutAttribute::centerX;
}

enum class NSLayoutRelation { lessThanOrEqual = -1, equal = 0, greaterThanOrEqual = 1 };

/// "first.attribute relation second.attribute + constant", or against the constant alone for a width or a
/// height without a second item.
/// Units: points, y downwards. Threads: main.
/// Lifetime: while active, the nearest common superitem of both items keeps it; it doesn't keep the items.
/// Failure: it can't become active when an item has gone, when the items share no tree, or when a place has
/// nothing to refer to; it then stays inactive, with one line on standard error.
class ZQ_EXPORT NSLayoutConstraint : public NSObject {
  public:
    /// A new, inactive constraint. `second` may be null, with `notAnAttribute`.
    [[nodiscard]] static std::shared_ptr<NSLayoutConstraint> make(
        LayoutItem& first, NSLayoutAttribute attribute, NSLayoutRelation relation, LayoutItem* second,
        NSLayoutAttribute secondAttribute, CGFloat constant = 0);
    ~NSLayoutConstraint() override;

    /// Null once the item has gone, and for a constraint without second item.
    [[nodiscard]] LayoutItem* firstItem() const noexcept { return *first_; }
    [[nodiscard]] LayoutItem* secondItem() const noexcept { return second_ ? *second_ : nullptr; }
    [[nodiscard]] NSLayoutAttribute firstAttribute() const noexcept { return firstAttribute_; }
    [[nodiscard]] NSLayoutAttribute secondAttribute() const noexcept { return secondAttribute_; }
    [[nodiscard]] NSLayoutRelation relation() const noexcept { return relation_; }

    /// May be set at any time; the solver only edits it.
    [[nodiscard]] CGFloat constant() const noexcept { return constant_; }
    void setConstant(CGFloat constant);
    /// 1000 by default; brought into 0...1000.
    [[nodiscard]] NSLayoutPriority priority() const noexcept { return priority_; }
    void setPriority(NSLayoutPriority priority);

    [[nodiscard]] bool isActive() const noexcept { return holder_ != nullptr; }
    /// Activating makes it the newest of its tree. Deactivating one that fell with its view does nothing.
    void setActive(bool active);
    static void activateConstraints(const std::vector<std::shared_ptr<NSLayoutConstraint>>& constraints);
    static void deactivateConstraints(const std::vector<std::shared_ptr<NSLayoutConstraint>>& constraints);

    /// "<view>.left == <view>.right + 8 @ 750".
    [[nodiscard]] std::string description() const override;

  private:
    friend class LayoutEngine;
    friend class LayoutItem;
    template <class T, class... Arguments>
    friend std::shared_ptr<T> makeObject(Arguments&&...);
    NSLayoutConstraint(LayoutItem& first, NSLayoutAttribute attribute, NSLayoutRelation relation,
                       LayoutItem* second, NSLayoutAttribute secondAttribute, CGFloat constant);

    LayoutItem* commonSuperitem() const;
    void activate();
    void deactivate();
    LayoutItem* letGo();

    std::shared_ptr<LayoutItem*> first_;
    std::shared_ptr<LayoutItem*> second_;
    LayoutItem* holder_ = nullptr;
    std::uint64_t age_ = 0;  // of the activation
    NSLayoutAttribute firstAttribute_;
    NSLayoutAttribute secondAttribute_;
    NSLayoutRelation relation_;
    CGFloat constant_;
    NSLayoutPriority priority_ = NSLayoutPriorityRequired;
};

}  // namespace zqcore::platform
