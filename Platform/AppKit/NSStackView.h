#pragma once

#include <map>
#include <memory>
#include <vector>

#include "Platform/AppKit/NSView.h"

namespace zqcore::platform {

class NSLayoutConstraint;

enum class NSUserInterfaceLayoutOrientation { horizontal = 0, vertical = 1 };

/// Views in a row or a column, placed by constraints: gaps at least the spacing and, if nothing stronger
/// asks, just that; centred across; as long as its views and gaps together. Hidden views leave the layout.
/// Units: points. Threads: main thread. Lifetime: arranged views are subviews.
/// Failure: a place past the end is the end; strangers are passed over.
class ZQ_EXPORT NSStackView : public NSView {
  public:
    using NSView::NSView;
    [[nodiscard]] static std::shared_ptr<NSStackView> stackViewWithViews(
        const std::vector<std::shared_ptr<NSView>>& views);

    [[nodiscard]] NSUserInterfaceLayoutOrientation orientation() const noexcept { return orientation_; }
    void setOrientation(NSUserInterfaceLayoutOrientation orientation);
    /// 8 at first.
    [[nodiscard]] CGFloat spacing() const noexcept { return spacing_; }
    void setSpacing(CGFloat spacing);
    [[nodiscard]] const NSEdgeInsets& edgeInsets() const noexcept { return insets_; }
    void setEdgeInsets(const NSEdgeInsets& insets);
    /// The gap after that view for as long as it is arranged.
    void setCustomSpacing(CGFloat spacing, const std::shared_ptr<NSView>& afterView);
    [[nodiscard]] CGFloat customSpacingAfterView(const std::shared_ptr<NSView>& view) const;

    [[nodiscard]] const std::vector<std::shared_ptr<NSView>>& arrangedSubviews() const noexcept {
        return arranged_;
    }
    void addArrangedSubview(const std::shared_ptr<NSView>& view);
    /// Moves a view that is arranged already.
    void insertArrangedSubview(const std::shared_ptr<NSView>& view, std::size_t index);
    /// Ends the arrangement and leaves the view among the subviews.
    void removeArrangedSubview(const std::shared_ptr<NSView>& view);

    void updateConstraints() override;
    void willRemoveSubview(NSView& view) override;
    void subviewHiddenChanged(NSView& view) override;

  private:
    void changed();

    std::vector<std::shared_ptr<NSView>> arranged_;
    std::map<const NSView*, CGFloat> customSpacing_;
    std::vector<std::shared_ptr<NSLayoutConstraint>> built_;
    NSEdgeInsets insets_;
    CGFloat spacing_ = 8;
    NSUserInterfaceLayoutOrientation orientation_ = NSUserInterfaceLayoutOrientation::horizontal;
};

}  // namespace zqcore::platform
