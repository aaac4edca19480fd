#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"
#include "Platform/Layout/LayoutItem.h"
#include "Platform/Layout/NSLayoutConstraint.h"

// Constraints as sentences:
//
//     snp(imageView).makeConstraints([&](ConstraintMaker& make) {
//         make.left().equalToSuperview().offset(14);
//         make.centerY().equalToSuperview();
//         make.size().equalTo(18);
//     });
//     snp(label).remakeConstraints([&](ConstraintMaker& make) {
//         make.left().equalTo(snp(imageView).right()).offset(5);
//         bottom_ = make.bottom().equalToSuperview().inset(8).constraint();   // later:
//         bottom_->updateInset(12)
//     });
//
// Making switches the mask translation of the constrained view off, not that of the other one. Threads: main.
namespace zqcore::platform {

/// A handle on what one sentence made: one constraint, or several for `edges` and `size`.
/// Lifetime: it may outlive its view; then its operations do nothing.
class ZQ_EXPORT MadeConstraint {
  public:
    /// Replaces the constant by `offset` as it is, active or not.
    void updateOffset(CGFloat offset);
    /// Replaces the constant by `inset` turned inwards: + on left and top, - on right and bottom, minus both
    /// sides on width and height.
    void updateInset(CGFloat inset);
    void updateInset(const NSEdgeInsets& insets);
    void updatePriority(NSLayoutPriority priority);
    void activate();
    void deactivate();
    /// Whether all of it is active.
    [[nodiscard]] bool isActive() const;
    [[nodiscard]] const std::vector<std::shared_ptr<NSLayoutConstraint>>& layoutConstraints() const noexcept {
        return constraints_;
    }

  private:
    friend class ConstraintMakerRelatable;
    friend class ConstraintView;
    std::vector<std::shared_ptr<NSLayoutConstraint>> constraints_;
};

/// Attributes of a view as the other side of a sentence: `snp(other).right()`.
struct ConstraintTarget {
    LayoutItem* item = nullptr;
    std::vector<NSLayoutAttribute> attributes;
};

/// The end of a sentence: what is added to the other side, how strongly, and the handle.
class ZQ_EXPORT ConstraintMakerEditable {
  public:
    ConstraintMakerEditable& offset(CGFloat offset);
    ConstraintMakerEditable& inset(CGFloat inset);
    ConstraintMakerEditable& inset(const NSEdgeInsets& insets);
    ConstraintMakerEditable& priority(NSLayoutPriority priority);
    [[nodiscard]] std::shared_ptr<MadeConstraint> constraint() const { return made_; }

  private:
    friend class ConstraintMakerRelatable;
    explicit ConstraintMakerEditable(std::shared_ptr<MadeConstraint> made) : made_(std::move(made)) {}
    std::shared_ptr<MadeConstraint> made_;
};

class ConstraintMaker;

/// The middle of a sentence. Against a view, the same attribute of it is meant; against a number, an edge or
/// centre refers to the superview with that offset, a width or height to the number alone.
class ZQ_EXPORT ConstraintMakerRelatable {
  public:
    /// More attributes for the same sentence: `make.left().top().equalToSuperview()`.
    ConstraintMakerRelatable& left() { return also(NSLayoutAttribute::left); }
    ConstraintMakerRelatable& right() { return also(NSLayoutAttribute::right); }
    ConstraintMakerRelatable& top() { return also(NSLayoutAttribute::top); }
    ConstraintMakerRelatable& bottom() { return also(NSLayoutAttribute::bottom); }
    ConstraintMakerRelatable& width() { return also(NSLayoutAttribute::width); }
    ConstraintMakerRelatable& height() { return also(NSLayoutAttribute::height); }
    ConstraintMakerRelatable& centerX() { return also(NSLayoutAttribute::centerX); }
    ConstraintMakerRelatable& centerY() { return also(NSLayoutAttribute::centerY); }

    ConstraintMakerEditable equalTo(const ConstraintTarget& other) {
        return relate(NSLayoutRelation::equal, other);
    }
    ConstraintMakerEditable equalTo(LayoutItem& other) {
        return relate(NSLayoutRelation::equal, ConstraintTarget{&other, {}});
    }
    ConstraintMakerEditable equalTo(CGFloat number) {
        return relate(NSLayoutRelation::equal, CGSize{number, number});
    }
    ConstraintMakerEditable equalTo(CGSize size) { return relate(NSLayoutRelation::equal, size); }
    ConstraintMakerEditable equalToSuperview() { return relateToSuperview(NSLayoutRelation::equal); }
    ConstraintMakerEditable lessThanOrEqualTo(const ConstraintTarget& other) {
        return relate(NSLayoutRelation::lessThanOrEqual, other);
    }
    ConstraintMakerEditable lessThanOrEqualTo(LayoutItem& other) {
        return relate(NSLayoutRelation::lessThanOrEqual, ConstraintTarget{&other, {}});
    }
    ConstraintMakerEditable lessThanOrEqualTo(CGFloat number) {
        return relate(NSLayoutRelation::lessThanOrEqual, CGSize{number, number});
    }
    ConstraintMakerEditable lessThanOrEqualToSuperview() {
        return relateToSuperview(NSLayoutRelation::lessThanOrEqual);
    }
    ConstraintMakerEditable greaterThanOrEqualTo(const ConstraintTarget& other) {
        return relate(NSLayoutRelation::greaterThanOrEqual, other);
    }
    ConstraintMakerEditable greaterThanOrEqualTo(LayoutItem& other) {
        return relate(NSLayoutRelation::greaterThanOrEqual, ConstraintTarget{&other, {}});
    }
    ConstraintMakerEditable greaterThanOrEqualTo(CGFloat number) {
        return relate(NSLayoutRelation::greaterThanOrEqual, CGSize{number, number});
    }
    ConstraintMakerEditable greaterThanOrEqualToSuperview() {
        return relateToSuperview(NSLayoutRelation::greaterThanOrEqual);
    }
    template <class Item>
    ConstraintMakerEditable equalTo(const std::shared_ptr<Item>& other) {
        return equalTo(*other);
    }
    template <class Item>
    ConstraintMakerEditable lessThanOrEqualTo(const std::shared_ptr<Item>& other) {
        return lessThanOrEqualTo(*other);
    }
    template <class Item>
    ConstraintMakerEditable greaterThanOrEqualTo(const std::shared_ptr<Item>& other) {
        return greaterThanOrEqualTo(*other);
    }

  private:
    friend class ConstraintMaker;
    ConstraintMakerRelatable(ConstraintMaker& maker, std::vector<NSLayoutAttribute> attributes)
        : maker_(maker), attributes_(std::move(attributes)) {}
    ConstraintMakerRelatable& also(NSLayoutAttribute attribute);
    ConstraintMakerEditable relate(NSLayoutRelation relation, const ConstraintTarget& other);
    ConstraintMakerEditable relate(NSLayoutRelation relation, CGSize numbers);
    ConstraintMakerEditable relateToSuperview(NSLayoutRelation relation);

    ConstraintMaker& maker_;
    std::vector<NSLayoutAttribute> attributes_;
};

/// The beginning of a sentence, valid inside the closure that gets it; what it made becomes active when the
/// closure has returned, in the order of the sentences.
class ZQ_EXPORT ConstraintMaker {
  public:
    [[nodiscard]] ConstraintMakerRelatable left() { return begin({NSLayoutAttribute::left}); }
    [[nodiscard]] ConstraintMakerRelatable right() { return begin({NSLayoutAttribute::right}); }
    [[nodiscard]] ConstraintMakerRelatable top() { return begin({NSLayoutAttribute::top}); }
    [[nodiscard]] ConstraintMakerRelatable bottom() { return begin({NSLayoutAttribute::bottom}); }
    [[nodiscard]] ConstraintMakerRelatable width() { return begin({NSLayoutAttribute::width}); }
    [[nodiscard]] ConstraintMakerRelatable height() { return begin({NSLayoutAttribute::height}); }
    [[nodiscard]] ConstraintMakerRelatable centerX() { return begin({NSLayoutAttribute::centerX}); }
    [[nodiscard]] ConstraintMakerRelatable centerY() { return begin({NSLayoutAttribute::centerY}); }
    /// Top, left, bottom and right.
    [[nodiscard]] ConstraintMakerRelatable edges() {
        return begin({NSLayoutAttribute::top, NSLayoutAttribute::left, NSLayoutAttribute::bottom,
                      NSLayoutAttribute::right});
    }
    /// Width and height.
    [[nodiscard]] ConstraintMakerRelatable size() {
        return begin({NSLayoutAttribute::width, NSLayoutAttribute::height});
    }
    [[nodiscard]] ConstraintMakerRelatable center() {
        return begin({NSLayoutAttribute::centerX, NSLayoutAttribute::centerY});
    }

  private:
    friend class ConstraintMakerRelatable;
    friend class ConstraintView;
    explicit ConstraintMaker(LayoutItem& item) : item_(item) {}
    ConstraintMakerRelatable begin(std::vector<NSLayoutAttribute> attributes);

    LayoutItem& item_;
    std::vector<std::shared_ptr<MadeConstraint>> made_;
};

/// A view seen as something to constrain, or to refer to. Made by `snp`, used at once.
class ZQ_EXPORT ConstraintView {
  public:
    explicit ConstraintView(LayoutItem& item) : item_(item) {}

    /// Adds to what is there.
    void makeConstraints(const std::function<void(ConstraintMaker&)>& closure) const;
    /// Removes all that a maker made on this view, then makes.
    void remakeConstraints(const std::function<void(ConstraintMaker&)>& closure) const;
    /// Replaces the constants of those made before between the same attributes with the same relation; adds
    /// what isn't there yet.
    void updateConstraints(const std::function<void(ConstraintMaker&)>& closure) const;
    void removeConstraints() const;

    [[nodiscard]] ConstraintTarget left() const { return {&item_, {NSLayoutAttribute::left}}; }
    [[nodiscard]] ConstraintTarget right() const { return {&item_, {NSLayoutAttribute::right}}; }
    [[nodiscard]] ConstraintTarget top() const { return {&item_, {NSLayoutAttribute::top}}; }
    [[nodiscard]] ConstraintTarget bottom() const { return {&item_, {NSLayoutAttribute::bottom}}; }
    [[nodiscard]] ConstraintTarget width() const { return {&item_, {NSLayoutAttribute::width}}; }
    [[nodiscard]] ConstraintTarget height() const { return {&item_, {NSLayoutAttribute::height}}; }
    [[nodiscard]] ConstraintTarget centerX() const { return {&item_, {NSLayoutAttribute::centerX}}; }
    [[nodiscard]] ConstraintTarget centerY() const { return {&item_, {NSLayoutAttribute::centerY}}; }

  private:
    LayoutItem& item_;
};

[[nodiscard]] inline ConstraintView snp(LayoutItem& item) { return ConstraintView(item); }
template <class Item>
[[nodiscard]] ConstraintView snp(const std::shared_ptr<Item>& item) {
    return ConstraintView(*item);
}

}  // namespace zqcore::platform
