#pragma once

#include <memory>

#include "Platform/AppKit/NSClipView.h"
#include "Platform/AppKit/NSScroller.h"

namespace zqcore::platform {

enum class NSScrollElasticity { automatic = 0, none = 1, allowed = 2 };

/// A view that shows part of a document and scrolls it. Insets widen how far it may be scrolled and move
/// nothing by themselves. Gestures may pull past the limits where elasticity allows it and spring back in a
/// quarter of a second when they end; a wheel without gestures stops at the limits. Units: points; positive
/// delta y moves the content down. Threads: main thread. Lifetime: holds its clip view.
class ZQ_EXPORT NSScrollView : public NSView {
  public:
    using NSView::NSView;
    ~NSScrollView() override;

    /// The clip view. May be overridden; the base looks at its own.
    [[nodiscard]] virtual const std::shared_ptr<NSClipView>& contentView() const { return clip_; }
    /// The document goes over to the new clip view.
    virtual void setContentView(const std::shared_ptr<NSClipView>& clip);
    [[nodiscard]] virtual std::shared_ptr<NSView> documentView() const;
    virtual void setDocumentView(const std::shared_ptr<NSView>& view);
    [[nodiscard]] virtual NSEdgeInsets contentInsets() const { return insets_; }
    virtual void setContentInsets(const NSEdgeInsets& insets) { insets_ = insets; }
    [[nodiscard]] bool automaticallyAdjustsContentInsets() const noexcept { return adjustsInsets_; }
    /// A stored flag.
    void setAutomaticallyAdjustsContentInsets(bool adjusts) noexcept { adjustsInsets_ = adjusts; }
    [[nodiscard]] NSScrollElasticity verticalScrollElasticity() const noexcept { return vertical_; }
    void setVerticalScrollElasticity(NSScrollElasticity elasticity) noexcept { vertical_ = elasticity; }
    [[nodiscard]] NSScrollElasticity horizontalScrollElasticity() const noexcept { return horizontal_; }
    void setHorizontalScrollElasticity(NSScrollElasticity elasticity) noexcept { horizontal_ = elasticity; }
    [[nodiscard]] bool drawsBackground() const noexcept { return clip_->drawsBackground(); }
    void setDrawsBackground(bool draws) { clip_->setDrawsBackground(draws); }
    /// Scrollers lie over the document's edge and show for a moment when it moves; none at first.
    [[nodiscard]] bool hasVerticalScroller() const noexcept { return verticalScroller_ != nullptr; }
    void setHasVerticalScroller(bool has);
    [[nodiscard]] const std::shared_ptr<NSScroller>& verticalScroller() const noexcept {
        return verticalScroller_;
    }
    [[nodiscard]] bool hasHorizontalScroller() const noexcept { return horizontalScroller_ != nullptr; }
    void setHasHorizontalScroller(bool has);
    [[nodiscard]] const std::shared_ptr<NSScroller>& horizontalScroller() const noexcept {
        return horizontalScroller_;
    }

    /// Brings the scrollers up to date and shows them, and nothing else.
    virtual void reflectScrolledClipView(NSClipView& clip);
    void scrollWheel(const NSEvent& event) override;
    void resizeSubviewsWithOldSize(CGSize oldSize) override;

    /// The nearest origin within the limits.
    [[nodiscard]] CGPoint limited(CGPoint origin) const;

  protected:
    void setup() override;

  private:
    friend class NSClipView;
    void documentFrameChanged();
    void springBack();
    void tile();
    void setScroller(std::shared_ptr<NSScroller>& scroller, NSScroller::Direction direction, bool has);
    void placeKnobs();

    std::shared_ptr<NSClipView> clip_;
    std::shared_ptr<NSScroller> verticalScroller_;
    std::shared_ptr<NSScroller> horizontalScroller_;
    NSEdgeInsets insets_;
    NSScrollElasticity vertical_ = NSScrollElasticity::automatic;
    NSScrollElasticity horizontal_ = NSScrollElasticity::automatic;
    bool adjustsInsets_ = true;
    bool inGesture_ = false;
};

}  // namespace zqcore::platform
