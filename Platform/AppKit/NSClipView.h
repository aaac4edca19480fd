#pragma once

#include <memory>

#include "Platform/AppKit/NSView.h"

namespace zqcore::platform {

class NSColor;
class SteppedAnimation;

/// The window onto a document: scrolling changes its bounds origin alone, exactly as told. It clips what it
/// holds and is flipped as its document is. Threads: main thread.
class ZQ_EXPORT NSClipView : public NSView {
  public:
    using NSView::NSView;
    ~NSClipView() override;

    [[nodiscard]] const std::shared_ptr<NSView>& documentView() const noexcept { return document_; }
    void setDocumentView(const std::shared_ptr<NSView>& view);
    /// Also ends steps under way.
    void setBoundsOrigin(CGPoint origin) override;
    [[nodiscard]] bool isFlipped() const override { return document_ && document_->isFlipped(); }
    [[nodiscard]] bool clipsToBounds() const override { return true; }
    [[nodiscard]] bool drawsBackground() const noexcept { return drawsBackground_; }
    void setDrawsBackground(bool draws);
    [[nodiscard]] const std::shared_ptr<NSColor>& backgroundColor() const noexcept { return background_; }
    void setBackgroundColor(std::shared_ptr<NSColor> color);
    [[nodiscard]] bool copiesOnScroll() const noexcept { return copiesOnScroll_; }
    void setCopiesOnScroll(bool copies) noexcept { copiesOnScroll_ = copies; }

    /// Where changes run to their value under the current animation context, 60 steps a second, each posted.
    class Animator {
      public:
        explicit Animator(NSClipView& clip) : clip_(clip) {}
        void setBoundsOrigin(CGPoint origin);

      private:
        NSClipView& clip_;
    };
    [[nodiscard]] Animator animator() { return Animator(*this); }
    /// Leaves the origin where the steps have brought it.
    void stopAnimations() { steps_.reset(); }

    void subviewFrameDidChange(NSView& view) override;
    void willRemoveSubview(NSView& view) override;
    void drawRect(const CGRect& dirtyRect) override;

  private:
    std::shared_ptr<NSView> document_;
    std::shared_ptr<NSColor> background_;
    std::shared_ptr<SteppedAnimation> steps_;
    bool stepping_ = false;
    bool drawsBackground_ = true;
    bool copiesOnScroll_ = true;
};

}  // namespace zqcore::platform
