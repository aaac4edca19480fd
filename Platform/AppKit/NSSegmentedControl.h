#pragma once

#include <string>
#include <vector>

#include "Platform/AppKit/NSControl.h"

namespace zqcore::platform {

/// A row of labelled segments of which one is selected. A press and release in the same segment selects it
/// and sends the action. Threads: main thread. Failure: numbers outside the row select nothing, -1.
class ZQ_EXPORT NSSegmentedControl : public NSControl {
  public:
    using NSControl::NSControl;

    [[nodiscard]] int segmentCount() const noexcept { return static_cast<int>(labels_.size()); }
    void setSegmentCount(int count);
    [[nodiscard]] std::string labelForSegment(int segment) const;
    void setLabel(std::string label, int forSegment);
    /// -1 without one.
    [[nodiscard]] int selectedSegment() const noexcept { return selected_; }
    void setSelectedSegment(int segment);

    void mouseDown(const NSEvent& event) override;
    void mouseUp(const NSEvent& event) override;
    void pressWasLost() override { pressed_ = -1; }
    void windowDidChangeKeyState() override { setNeedsDisplay(true); }
    [[nodiscard]] CGRect focusRingMaskBounds() const override { return bounds(); }
    void drawFocusRingMask() override;
    [[nodiscard]] CGSize intrinsicContentSize() const override;
    void drawRect(const CGRect& dirtyRect) override;

  private:
    [[nodiscard]] int segmentAt(const NSEvent& event) const;

    std::vector<std::string> labels_;
    int selected_ = -1;
    int pressed_ = -1;
};

}  // namespace zqcore::platform
