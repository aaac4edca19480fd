#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/AppKit/NSAccessibility.h"
#include "Platform/AppKit/NSResponder.h"
#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Data.h"
#include "Platform/Base/Export.h"
#include "Platform/Foundation/NSComparisonResult.h"
#include "Platform/Layout/LayoutItem.h"

namespace zqcore::platform {

class CALayer;
class CIFilter;
class NSKeyValueCoding;
class NSPDFImageRep;
class NSShadow;
class NSTrackingArea;
class NSViewController;
class NSWindow;
class Value;
struct NSBindingInfo;
struct NSBindingOptions;

inline constexpr std::string_view NSViewFrameDidChangeNotification = "NSViewFrameDidChangeNotification";
inline constexpr std::string_view NSViewBoundsDidChangeNotification = "NSViewBoundsDidChangeNotification";

enum class NSWindowOrderingMode { below = -1, out = 0, above = 1 };

/// How a side gives when the superview's size changes, as bits.
using NSAutoresizingMaskOptions = unsigned;
inline constexpr NSAutoresizingMaskOptions NSViewNotSizable = 0;
inline constexpr NSAutoresizingMaskOptions NSViewMinXMargin = 1;
inline constexpr NSAutoresizingMaskOptions NSViewWidthSizable = 2;
inline constexpr NSAutoresizingMaskOptions NSViewMaxXMargin = 4;
inline constexpr NSAutoresizingMaskOptions NSViewMinYMargin = 8;
inline constexpr NSAutoresizingMaskOptions NSViewHeightSizable = 16;
inline constexpr NSAutoresizingMaskOptions NSViewMaxYMargin = 32;

/// A rectangle of a window that draws, holds other views and takes events.
/// Units: points. The frame lies in the superview's interior space; `isFlipped` turns the view's own interior
/// alone. Window space is y-up from the lower left of the window. Threads: main thread.
/// Lifetime: a view holds its subviews; superview, window and controller are held weakly.
/// Failure: strangers given as parents or siblings are passed over; an exception of an override is caught.
class ZQ_EXPORT NSView : public NSResponder, public LayoutItem {
  public:
    NSView() = default;
    explicit NSView(const CGRect& frame) : frame_(frame) {}
    ~NSView() override;

    // Tree.
    [[nodiscard]] std::shared_ptr<NSView> superview() const noexcept { return superview_.lock(); }
    [[nodiscard]] std::shared_ptr<NSWindow> window() const noexcept { return window_.lock(); }
    /// Back to front.
    [[nodiscard]] const std::vector<std::shared_ptr<NSView>>& subviews() const noexcept { return subviews_; }
    /// In front of all; leaves its old parent first. An ancestor of this view, or itself, is refused.
    void addSubview(const std::shared_ptr<NSView>& view);
    /// Right in front of or behind `sibling`; without one in front of or behind all.
    void addSubview(const std::shared_ptr<NSView>& view, NSWindowOrderingMode place,
                    const std::shared_ptr<NSView>& sibling);
    void removeFromSuperview();
    /// Stable: equal views keep their order.
    void sortSubviewsUsingFunction(const std::function<NSComparisonResult(NSView&, NSView&)>& compare);
    [[nodiscard]] bool isDescendantOf(const NSView& view) const noexcept;
    [[nodiscard]] std::shared_ptr<NSResponder> nextResponder() const override;

    virtual void viewWillMoveToWindow(const std::shared_ptr<NSWindow>& /*window*/) {}
    virtual void viewDidMoveToWindow() {}
    virtual void viewWillMoveToSuperview(const std::shared_ptr<NSView>& /*superview*/) {}
    virtual void viewDidMoveToSuperview() {}
    virtual void didAddSubview(NSView& /*view*/) {}
    virtual void willRemoveSubview(NSView& /*view*/) {}
    /// A subview was hidden or shown; stacks lay out again.
    virtual void subviewHiddenChanged(NSView& /*view*/) {}
    /// The window became or ceased to be the one with the keys.
    virtual void windowDidChangeKeyState() {}
    /// Clip views bring their place within the document's limits.
    virtual void subviewFrameDidChange(NSView& /*view*/) {}
    virtual void viewDidHide() {}
    virtual void viewDidUnhide() {}
    virtual void viewDidChangeEffectiveAppearance() {}

    [[nodiscard]] bool isHidden() const noexcept { return hidden_; }
    virtual void setHidden(bool hidden);
    [[nodiscard]] bool isHiddenOrHasHiddenAncestor() const noexcept;

    // Geometry.
    [[nodiscard]] const CGRect& frame() const noexcept { return frame_; }
    virtual void setFrame(const CGRect& frame);
    void setFrameOrigin(CGPoint origin) { setFrame({origin, frame_.size}); }
    virtual void setFrameSize(CGSize size);
    /// Its size is always that of the frame.
    [[nodiscard]] CGRect bounds() const noexcept { return {boundsOrigin_, frame_.size}; }
    /// Moves what is inside; exactly, whatever the content's size.
    virtual void setBoundsOrigin(CGPoint origin);
    void setBounds(const CGRect& bounds);
    [[nodiscard]] virtual bool isFlipped() const { return false; }
    [[nodiscard]] NSAutoresizingMaskOptions autoresizingMask() const noexcept { return autoresizingMask_; }
    void setAutoresizingMask(NSAutoresizingMaskOptions mask) { autoresizingMask_ = mask; }
    [[nodiscard]] bool autoresizesSubviews() const noexcept { return autoresizesSubviews_; }
    void setAutoresizesSubviews(bool resizes) { autoresizesSubviews_ = resizes; }
    virtual void resizeSubviewsWithOldSize(CGSize oldSize);

    /// Between this view's space and another's; a null view is the window's space. Views of different windows
    /// are not related: the window spaces then count as one.
    [[nodiscard]] CGPoint convertPointToView(CGPoint point, const std::shared_ptr<NSView>& view) const;
    [[nodiscard]] CGPoint convertPointFromView(CGPoint point, const std::shared_ptr<NSView>& view) const;
    [[nodiscard]] CGRect convertRectToView(const CGRect& rect, const std::shared_ptr<NSView>& view) const;
    [[nodiscard]] CGRect convertRectFromView(const CGRect& rect, const std::shared_ptr<NSView>& view) const;
    /// The part of the bounds that no clipping ancestor cuts off.
    [[nodiscard]] CGRect visibleRect() const;

    /// Whether changes of frame and bounds origin are posted; switching on after an unposted change posts at
    /// once. Both are on at first.
    [[nodiscard]] bool postsFrameChangedNotifications() const noexcept { return frameNotice_.posts; }
    void setPostsFrameChangedNotifications(bool posts);
    [[nodiscard]] bool postsBoundsChangedNotifications() const noexcept { return boundsNotice_.posts; }
    void setPostsBoundsChangedNotifications(bool posts);

    /// What a nib or a table knows it by.
    [[nodiscard]] const std::string& identifier() const noexcept { return identifier_; }
    void setIdentifier(std::string identifier) { identifier_ = std::move(identifier); }

    // Events.
    /// The view that takes a press at `point` of the *superview's* space: the frontmost subview's answer,
    /// else this view; null when hidden or outside.
    [[nodiscard]] virtual std::shared_ptr<NSView> hitTest(CGPoint point);
    [[nodiscard]] bool mouseInRect(CGPoint point, const CGRect& rect) const;
    /// Whether the press that activates the application is also for this view.
    [[nodiscard]] virtual bool acceptsFirstMouse(const NSEvent* /*event*/) { return false; }
    /// Offers it to the subviews in their order, depth first.
    bool performKeyEquivalent(const NSEvent& event) override;
    [[nodiscard]] virtual bool canBecomeKeyView() const;
    /// The release of a press that this view, or one inside it, got will not come: the view or its window
    /// went.
    virtual void pressWasLost() {}

    void addTrackingArea(const std::shared_ptr<NSTrackingArea>& area);
    void removeTrackingArea(const std::shared_ptr<NSTrackingArea>& area);
    [[nodiscard]] const std::vector<std::shared_ptr<NSTrackingArea>>& trackingAreas() const noexcept {
        return trackingAreas_;
    }
    /// Called in the display pass when the view entered a window and after its geometry changed.
    virtual void updateTrackingAreas() {}

    // Drawing.
    [[nodiscard]] bool needsDisplay() const noexcept { return needsDisplay_; }
    void setNeedsDisplay(bool needs);
    /// Draws into the current graphics context, in the view's own space.
    virtual void drawRect(const CGRect& /*dirtyRect*/) {}
    [[nodiscard]] virtual bool wantsUpdateLayer() const { return false; }
    /// Instead of `drawRect` where `wantsUpdateLayer`: brings the layer up to date.
    virtual void updateLayer() {}
    [[nodiscard]] bool wantsLayer() const noexcept { return wantsLayer_; }
    void setWantsLayer(bool wants);
    /// The backing layer; each view has one, wanted or not.
    [[nodiscard]] const std::shared_ptr<CALayer>& layer() const noexcept { return layer_; }
    void setLayer(std::shared_ptr<CALayer> layer);
    [[nodiscard]] virtual std::shared_ptr<CALayer> makeBackingLayer();
    /// The opacity of the layer, whoever set it.
    [[nodiscard]] CGFloat alphaValue() const noexcept;
    virtual void setAlphaValue(CGFloat alpha);
    /// The layer's shadow; null takes it off.
    [[nodiscard]] const std::shared_ptr<NSShadow>& shadow() const noexcept { return shadow_; }
    void setShadow(std::shared_ptr<NSShadow> shadow);
    /// What the whole subtree is shown through.
    [[nodiscard]] const std::vector<std::shared_ptr<CIFilter>>& contentFilters() const;
    void setContentFilters(std::vector<std::shared_ptr<CIFilter>> filters);
    /// Where the shape lies that the focus ring goes round; empty, and so no ring, at first.
    [[nodiscard]] virtual CGRect focusRingMaskBounds() const { return {}; }
    /// Fills that shape in the current graphics context, in the view's own space.
    virtual void drawFocusRingMask() {}
    /// What the subtree draws in `rect` of its own space, drawn up to date first: a file of one page, empty
    /// for a rectangle without area, or the same as a form of an image, null then.
    [[nodiscard]] Data dataWithPDFInsideRect(const CGRect& rect);
    [[nodiscard]] std::shared_ptr<NSPDFImageRep> PDFImageRepInsideRect(const CGRect& rect);
    /// Whether subviews are cut off at the bounds; asked once, at the setup.
    [[nodiscard]] virtual bool clipsToBounds() const { return false; }

    // Layout.
    [[nodiscard]] bool needsLayout() const noexcept { return needsLayout_; }
    void setNeedsLayout(bool needs);
    virtual void layout() {}
    void layoutSubtreeIfNeeded();
    [[nodiscard]] bool needsUpdateConstraints() const noexcept { return needsUpdateConstraints_; }
    void setNeedsUpdateConstraints(bool needs);
    virtual void updateConstraints() {}
    /// The smallest size that meets the constraints inside.
    [[nodiscard]] virtual CGSize fittingSize();

    // Accessibility: the names are those of NSAccessibility.h.
    /// Whether a reader sees through it to what is inside; a plain view is passed over.
    [[nodiscard]] virtual bool accessibilityIsIgnored() const { return true; }
    /// Who is at a place of the screen: the frontmost inside that isn't ignored, else this view; null
    /// outside.
    [[nodiscard]] virtual std::shared_ptr<NSView> accessibilityHitTest(CGPoint point);
    [[nodiscard]] virtual std::vector<std::string> accessibilityAttributeNames() const;
    /// Nothing for an unknown name.
    [[nodiscard]] virtual NSAccessibilityValue accessibilityAttributeValue(std::string_view name);
    [[nodiscard]] virtual bool accessibilityIsAttributeSettable(std::string_view name) const;
    /// What can't be set is passed over, and so is a value of another kind.
    virtual void accessibilitySetValue(const NSAccessibilityValue& value, std::string_view forAttribute);
    [[nodiscard]] virtual std::vector<std::string> accessibilityActionNames() const { return {}; }
    virtual void accessibilityPerformAction(std::string_view /*name*/) {}

    // Bindings.
    /// Ties the value called `binding` to the one at the model's key path, in place of an older tie: it is
    /// set now and after each change, through the transformer of the options. A null model only unties.
    void bind(std::string_view binding, const std::shared_ptr<NSKeyValueCoding>& object, std::string keyPath,
              NSBindingOptions options);
    void unbind(std::string_view binding);
    /// Absent for a name that isn't bound.
    [[nodiscard]] std::optional<NSBindingInfo> infoForBinding(std::string_view binding) const;
    /// Takes the model's value; does not send it back. The base has no values.
    virtual void setValueForBinding(const Value& /*value*/, std::string_view /*binding*/) {}

    // LayoutItem.
    [[nodiscard]] LayoutItem* layoutSuperitem() const override;
    void forEachLayoutSubitem(const std::function<void(LayoutItem&)>& body) const override;
    [[nodiscard]] CGRect layoutFrame() const override;
    void setLayoutFrame(const CGRect& frame) override;
    [[nodiscard]] std::string layoutDescription() const override;

  protected:
    /// To be called by a class whose `isFlipped` has come to answer otherwise.
    void flipDidChange();
    void setup() override;
    void layoutDidBecomeStale() override;

  private:
    friend class NSWindow;
    friend class NSViewController;
    friend class DisplayPass;
    friend class PointerTracking;

    struct Bindings;
    struct Notice {
        bool posts = true;
        bool missed = false;
    };

    void detach(NSView& view, bool staysInWindow);
    // What hangs on the tree: layers and constraints follow it.
    void linked(NSView& view);
    void unlinking(NSView& view);
    void reorderLayers();
    void applyLayerGeometry();
    void applyLayerState();
    void attachLayer(const NSView& subview);
    void prepareLayer();
    void tellWillMove(const std::shared_ptr<NSWindow>& window);
    void enterWindow(const std::shared_ptr<NSWindow>& window);
    void tellHidden(bool hidden);
    void markTracking();
    void markSubtreeTracking();
    void post(Notice& notice, std::string_view name);
    [[nodiscard]] CGPoint toParent(CGPoint point) const;
    [[nodiscard]] CGPoint fromParent(CGPoint point) const;
    [[nodiscard]] CGPoint toWindow(CGPoint point) const;
    [[nodiscard]] CGPoint fromWindow(CGPoint point) const;
    [[nodiscard]] std::shared_ptr<NSView> self() {
        return std::static_pointer_cast<NSView>(shared_from_this());
    }

    std::weak_ptr<NSView> superview_;
    std::weak_ptr<NSWindow> window_;
    std::weak_ptr<NSViewController> controller_;
    std::vector<std::shared_ptr<NSView>> subviews_;
    std::vector<std::shared_ptr<NSTrackingArea>> trackingAreas_;
    std::shared_ptr<CALayer> layer_;
    std::shared_ptr<NSShadow> shadow_;
    std::shared_ptr<Bindings> bindings_;
    std::string identifier_;

    CGRect frame_;
    CGPoint boundsOrigin_;
    CGFloat alpha_ = 1;
    CGFloat drawnScale_ = 0;  // the pixels a point of the last drawing
    NSAutoresizingMaskOptions autoresizingMask_ = NSViewNotSizable;
    Notice frameNotice_;
    Notice boundsNotice_;
    bool autoresizesSubviews_ = true;
    bool hidden_ = false;
    bool wantsLayer_ = false;
    bool needsDisplay_ = true;
    bool needsLayout_ = true;
    bool needsUpdateConstraints_ = true;
    bool needsTracking_ = true;
    bool settingLayoutFrame_ = false;
};

}  // namespace zqcore::platform
