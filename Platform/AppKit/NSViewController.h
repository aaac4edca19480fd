#pragma once

#include <memory>
#include <vector>

#include "Platform/AppKit/NSResponder.h"

namespace zqcore::platform {

class NSView;

/// What manages one view and the controllers inside it. Threads: main thread.
/// Lifetime: holds its view and its children; the view knows it weakly and passes events on to it.
class ZQ_EXPORT NSViewController : public NSResponder {
  public:
    /// Made by `loadView` at the first use.
    [[nodiscard]] const std::shared_ptr<NSView>& view();
    void setView(std::shared_ptr<NSView> view);
    [[nodiscard]] bool isViewLoaded() const noexcept { return view_ != nullptr; }
    /// Sets the view; the base makes an empty one.
    virtual void loadView();
    virtual void viewDidLoad() {}

    [[nodiscard]] const std::vector<std::shared_ptr<NSViewController>>& children() const noexcept {
        return children_;
    }
    [[nodiscard]] std::shared_ptr<NSViewController> parent() const noexcept { return parent_.lock(); }
    void addChildViewController(const std::shared_ptr<NSViewController>& child);
    void removeFromParentViewController();

    [[nodiscard]] std::shared_ptr<NSResponder> nextResponder() const override;

  private:
    std::shared_ptr<NSView> view_;
    std::vector<std::shared_ptr<NSViewController>> children_;
    std::weak_ptr<NSViewController> parent_;
};

}  // namespace zqcore::platform
