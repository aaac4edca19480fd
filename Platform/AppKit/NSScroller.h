#pragma once

#include <memory>

#include "Platform/AppKit/NSView.h"

namespace zqcore::platform {

class NSTimer;

/// The knob that lies over the edge of what is scrolled: it shows where the visible part lies, comes when
/// that moves and fades a moment later. It takes no mouse. Values go from 0 to 1, 0 at the upper or left end.
/// Time: shown for 0.8 s, gone after another 0.25. Threads: main thread.
class ZQ_EXPORT NSScroller : public NSView {
  public:
    static constexpr CGFloat kWidth = 11;

    enum class Direction { vertical, horizontal };
    explicit NSScroller(Direction direction) : direction_(direction) {}
    ~NSScroller() override;

    [[nodiscard]] double doubleValue() const noexcept { return value_; }
    /// The visible part of the whole; 1 or more shows no knob.
    [[nodiscard]] double knobProportion() const noexcept { return proportion_; }
    void setValueAndProportion(double value, double proportion);
    /// Shows the knob for a moment, if there is anything to scroll.
    void flash();
    /// Where the knob lies in the bounds; null without one.
    [[nodiscard]] CGRect knobRect() const;

    [[nodiscard]] bool isFlipped() const override { return true; }
    [[nodiscard]] std::shared_ptr<NSView> hitTest(CGPoint /*point*/) override { return nullptr; }
    void drawRect(const CGRect& dirtyRect) override;

  protected:
    void setup() override;

  private:
    void fade();

    std::shared_ptr<NSTimer> timer_;
    double value_ = 0;
    double proportion_ = 1;
    Direction direction_;
};

}  // namespace zqcore::platform
