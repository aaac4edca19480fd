#pragma once

#include <memory>

#include "Classes/UI/TipManager/TipView.h"
#include "Platform/AppKit/NSPanel.h"
#include "Platform/AppKit/NSViewController.h"
#include "Platform/Base/Export.h"

namespace zqcore {

/// Holds the card inside its clear margin. Threads: main thread. Lifetime: as its window.
class ZQ_EXPORT TipViewController final : public NSViewController {
  public:
    [[nodiscard]] const std::shared_ptr<TipView>& tipView() const noexcept { return tipView_; }
    void loadView() override;

  private:
    std::shared_ptr<TipView> tipView_ = makeObject<TipView>();
};

/// The floating panel of a tip: above menus, on all spaces, without a frame, never taking the focus nor the
/// mouse. Threads: main thread. Lifetime: as long as the tip is on screen.
class ZQ_EXPORT TipWindow final : public NSPanel {
  public:
    TipWindow();

    [[nodiscard]] const std::shared_ptr<TipViewController>& tipViewController() const noexcept {
        return tipViewController_;
    }
    [[nodiscard]] bool canBecomeKey() const override { return false; }
    [[nodiscard]] bool canBecomeMain() const override { return false; }

  protected:
    void setup() override;

  private:
    std::shared_ptr<TipViewController> tipViewController_;
};

}  // namespace zqcore
