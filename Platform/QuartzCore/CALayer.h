#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Clock.h"
#include "Platform/Base/NSObject.h"
#include "Platform/Graphics/CGAffineTransform.h"
#include "Platform/Graphics/CGColor.h"

namespace zqcore::platform {

class CGContext;
class CGImage;
class CIFilter;
struct CAAnimationTerms;

/// Which parts of a frame give way when the superlayer's size changes; 0 keeps the frame as it is.
using CAAutoresizingMask = unsigned;
inline constexpr CAAutoresizingMask kCALayerMinXMargin = 1;
inline constexpr CAAutoresizingMask kCALayerWidthSizable = 2;
inline constexpr CAAutoresizingMask kCALayerMaxXMargin = 4;
inline constexpr CAAutoresizingMask kCALayerMinYMargin = 8;
inline constexpr CAAutoresizingMask kCALayerHeightSizable = 16;
inline constexpr CAAutoresizingMask kCALayerMaxYMargin = 32;

inline constexpr std::string_view kCACornerCurveCircular = "circular";
inline constexpr std::string_view kCACornerCurveContinuous = "continuous";

/// The frame after its surroundings went from `oldSize` to `newSize`: the one flexible part of an axis takes
/// the whole change, several share it by their lengths.
[[nodiscard]] ZQ_EXPORT CGRect autoresizedFrame(const CGRect& frame, CAAutoresizingMask mask, CGSize oldSize,
                                                CGSize newSize) noexcept;

/// A sheet in the tree of what is drawn: a rectangle with background, contents, sublayers and border.
///
/// `position` is where the anchor lies in the superlayer; the frame follows from it and the bounds' size.
/// Colours that are clear draw nothing; sizes may be negative, which draws nothing either.
/// Units: points; y grows upwards unless `geometryFlipped` turned it, here or in a superlayer.
/// Time: a setter changes the value at once. What shows may run to it, by `Clock::current()`, from what
/// showed at that moment; the terms come from the action policy (a view's layer has one), for a free layer
/// in a window's tree from the current CATransaction.
/// Threads: main. Lifetime: a superlayer keeps its sublayers. Failure: none.
class ZQ_EXPORT CALayer : public NSObject {
  public:
    CALayer();
    ~CALayer() override;

    // Geometry.
    [[nodiscard]] CGRect frame() const;
    /// Sets the bounds' size, and the position by the present anchor.
    void setFrame(const CGRect& frame);
    [[nodiscard]] CGRect bounds() const;
    /// Resizes the sublayers by their masks when the size changes, under the same terms.
    void setBounds(const CGRect& bounds);
    [[nodiscard]] CGPoint position() const;
    void setPosition(CGPoint position);
    /// In units of the size, (0.5, 0.5) at first. An override decides for placing and drawing.
    [[nodiscard]] virtual CGPoint anchorPoint() const;
    virtual void setAnchorPoint(CGPoint anchorPoint);
    [[nodiscard]] CGAffineTransform affineTransform() const;
    void setAffineTransform(const CGAffineTransform& transform);
    /// Whether y inside this layer runs the other way than in its superlayer.
    [[nodiscard]] bool isGeometryFlipped() const;
    void setGeometryFlipped(bool flipped);
    /// Whether y inside this layer runs downwards, all turns on the way to the root counted.
    [[nodiscard]] bool contentsAreFlipped() const;
    [[nodiscard]] CAAutoresizingMask autoresizingMask() const;
    void setAutoresizingMask(CAAutoresizingMask mask);

    // The tree. A layer that has a superlayer leaves it first; one that would hold itself is not added.
    [[nodiscard]] std::shared_ptr<CALayer> superlayer() const;
    /// Back to front.
    [[nodiscard]] const std::vector<std::shared_ptr<CALayer>>& sublayers() const;
    void addSublayer(const std::shared_ptr<CALayer>& layer);
    /// An index past the end is the end.
    void insertSublayer(const std::shared_ptr<CALayer>& layer, std::size_t index);
    void removeFromSuperlayer();
    /// Puts the sublayers, the same ones, in this order.
    void reorderSublayers(const std::vector<std::shared_ptr<CALayer>>& order);

    // Looks. Defaults: opacity 1, everything clear, 0 or off; shadow black at opacity 0, offset (0, -3),
    // radius 3.
    [[nodiscard]] CGColor backgroundColor() const;
    /// Whether one is set, be it clear.
    [[nodiscard]] bool hasBackgroundColor() const;
    void setBackgroundColor(const std::optional<CGColor>& color);
    [[nodiscard]] CGColor borderColor() const;
    void setBorderColor(const CGColor& color);
    [[nodiscard]] CGFloat borderWidth() const;
    void setBorderWidth(CGFloat width);
    [[nodiscard]] CGFloat cornerRadius() const;
    void setCornerRadius(CGFloat radius);
    /// Kept as it is told; both curves are drawn circular.
    [[nodiscard]] const std::string& cornerCurve() const;
    void setCornerCurve(std::string_view curve);
    /// Clips contents and sublayers to the rounded bounds, and cuts the shadow off.
    [[nodiscard]] bool masksToBounds() const;
    void setMasksToBounds(bool masks);
    /// Of the whole subtree, as a group; brought into 0...1 when drawn.
    [[nodiscard]] CGFloat opacity() const;
    void setOpacity(CGFloat opacity);
    [[nodiscard]] bool isHidden() const;
    void setHidden(bool hidden);
    [[nodiscard]] CGColor shadowColor() const;
    void setShadowColor(const CGColor& color);
    [[nodiscard]] CGFloat shadowOpacity() const;
    void setShadowOpacity(CGFloat opacity);
    /// In this layer's own y sense: (0, -2) falls downwards where y grows upwards.
    [[nodiscard]] CGSize shadowOffset() const;
    void setShadowOffset(CGSize offset);
    [[nodiscard]] CGFloat shadowRadius() const;
    void setShadowRadius(CGFloat radius);

    /// What the whole subtree is shown through, one after the other.
    [[nodiscard]] const std::vector<std::shared_ptr<CIFilter>>& filters() const;
    void setFilters(std::vector<std::shared_ptr<CIFilter>> filters);

    // Contents: a picture stretched over the bounds, or a drawing of its own.
    [[nodiscard]] const std::shared_ptr<const CGImage>& contents() const;
    void setContents(std::shared_ptr<const CGImage> contents);
    /// `draw` is called in the space of the bounds, once after each `setNeedsDisplay`, when the layer is next
    /// drawn; what it drew is kept, sharp at any scale. An empty one removes it.
    void setDrawHandler(std::function<void(CGContext&)> draw);
    void setNeedsDisplay();
    [[nodiscard]] bool needsDisplay() const;
    /// Runs the draw handler now if it is due; images that it draws choose their form for `scale` pixels a
    /// point.
    void displayIfNeeded(CGFloat scale = 1);

    // Animation.
    /// Decides for each change of an animatable value; without a policy the layer is free. A policy that
    /// gives none changes silently. CATransaction's disabled actions silence all.
    using ActionPolicy = std::function<std::optional<CAAnimationTerms>(const CALayer&)>;
    void setActionPolicy(ActionPolicy policy);
    /// The values that show now.
    struct Presentation {
        CGPoint position;
        CGRect bounds;
        CGAffineTransform affineTransform;
        CGFloat opacity = 1;
        CGColor backgroundColor, borderColor, shadowColor;
        CGFloat borderWidth = 0, cornerRadius = 0, shadowOpacity = 0, shadowRadius = 0;
        CGSize shadowOffset;
        CGRect frame;
    };
    [[nodiscard]] Presentation presentation() const;
    /// Ends what runs in this layer alone: the set values show.
    virtual void removeAllAnimations();
    /// Whether something still moves in this layer's subtree: then a further frame is worth drawing.
    [[nodiscard]] bool hasRunningAnimations() const;

    // For the window that shows the tree of this root.
    /// Makes this layer the root of a shown tree. `changed` is called at the first change after each
    /// `markRendered`; an empty one takes the tree out of its window.
    void setTreeChangeHandler(std::function<void()> changed);
    /// Whether anything in the subtree changed since `markRendered`.
    [[nodiscard]] bool needsRender() const;
    void markRendered();

  protected:
    /// What lies between background and sublayers, in the space of the bounds, `now` being the moment shown.
    virtual void drawContents(CGContext& context, const CGRect& bounds, Clock::Instant now);
    /// The part of that space that the layer itself paints, its bounds for one that keeps to them.
    [[nodiscard]] virtual CGRect paintedRect(const CGRect& bounds, Clock::Instant now) const;
    /// Whether `drawContents` would draw.
    [[nodiscard]] virtual bool hasContents() const;
    /// The latest end of what runs in this layer itself.
    [[nodiscard]] virtual Clock::Instant animationsEnd() const;
    /// For subclasses: tells that a value changed, and under which terms it is to move.
    [[nodiscard]] std::optional<CAAnimationTerms> termsOfChange();
    /// To be called after a change: something may run until `end`.
    void didChange(Clock::Instant end = {});

  private:
    friend class LayerRenderer;
    struct State;

    void tellChange(Clock::Instant end);
    void resizeSublayers(CGSize oldSize, const std::optional<CAAnimationTerms>& terms);
    Clock::Instant applyFrame(const CGRect& frame, const std::optional<CAAnimationTerms>& terms);
    Clock::Instant applyBounds(const CGRect& bounds, const std::optional<CAAnimationTerms>& terms);
    const CALayer& root() const;
    Presentation presentationAt(Clock::Instant now) const;

    std::unique_ptr<State> state_;
};

}  // namespace zqcore::platform
