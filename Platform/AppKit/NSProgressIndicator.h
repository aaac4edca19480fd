#pragma once

#include <memory>

#include "Platform/AppKit/NSView.h"

namespace zqcore::platform {

class CGContext;
class NSTimer;

enum class NSProgressIndicatorStyle { bar = 0, spinning = 1 };
enum class NSControlSize { regular = 0, small = 1, mini = 2 };

/// A spinner, or a bar at first, that tells no measure: it moves while it is started and visible in a window,
/// and costs nothing else. A spinner is 32 points regular, 16 small. Passes the mouse on. Time:
/// `Clock::current()`, 12 steps a turn, a turn a second. Threads: main thread.
class ZQ_EXPORT NSProgressIndicator : public NSView {
  public:
    using NSView::NSView;
    ~NSProgressIndicator() override;

    [[nodiscard]] NSProgressIndicatorStyle style() const noexcept { return style_; }
    void setStyle(NSProgressIndicatorStyle style);
    [[nodiscard]] NSControlSize controlSize() const noexcept { return size_; }
    void setControlSize(NSControlSize size);
    [[nodiscard]] bool isDisplayedWhenStopped() const noexcept { return displayedWhenStopped_; }
    void setDisplayedWhenStopped(bool displayed);
    [[nodiscard]] bool isAnimating() const noexcept { return animating_; }
    void startAnimation(NSObject* sender = nullptr);
    void stopAnimation(NSObject* sender = nullptr);

    [[nodiscard]] CGSize intrinsicContentSize() const override;
    void viewDidMoveToWindow() override;
    void viewDidHide() override { updateTimer(); }
    void viewDidUnhide() override { updateTimer(); }
    void drawRect(const CGRect& dirtyRect) override;

  private:
    void updateTimer();
    void drawSpokes(CGContext& context, int front) const;
    void drawBar(CGContext& context, int step) const;

    std::shared_ptr<NSTimer> timer_;
    NSProgressIndicatorStyle style_ = NSProgressIndicatorStyle::bar;
    NSControlSize size_ = NSControlSize::regular;
    bool displayedWhenStopped_ = true;
    bool animating_ = false;
};

}  // namespace zqcore::platform
