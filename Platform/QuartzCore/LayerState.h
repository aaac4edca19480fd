#pragma once

#include "Platform/Graphics/CGRect.h"
#include "Platform/QuartzCore/AnimatedValue.h"
#include "Platform/QuartzCore/CALayer.h"
#include "Platform/QuartzCore/LayerRecording.h"

// Private to the layers and their renderer.
namespace zqcore::platform {

struct CALayer::State {
    AnimatedValue<CGPoint> position;
    AnimatedValue<CGRect> bounds;
    AnimatedValue<CGAffineTransform> transform;
    AnimatedValue<CGFloat> opacity{1};
    AnimatedValue<CGColor> backgroundColor;
    AnimatedValue<CGColor> borderColor{CGColor::white(0)};
    AnimatedValue<CGFloat> borderWidth;
    AnimatedValue<CGFloat> cornerRadius;
    AnimatedValue<CGColor> shadowColor{CGColor::white(0)};
    AnimatedValue<CGFloat> shadowOpacity;
    AnimatedValue<CGSize> shadowOffset{CGSize{0, -3}};
    AnimatedValue<CGFloat> shadowRadius{3};

    CGPoint anchorPoint{0.5, 0.5};
    CAAutoresizingMask autoresizingMask = 0;
    bool geometryFlipped = false;
    bool masksToBounds = false;
    bool hidden = false;
    bool hasBackground = false;
    bool needsDisplay = false;
    bool needsRender = true;      // something in the subtree
    Clock::Instant runningUntil;  // anything in the subtree, at the latest

    // What the renderer knows from the last time, in the space of the root's superlayer.
    bool changed = true;       // the layer itself since then
    bool indivisible = false;  // something in the subtree is drawn wholly or not at all
    Clock::Instant renderedAt;
    CGRect covered = CGRectNull();    // by the subtree
    CGRect uncovered = CGRectNull();  // by sublayers that left since then

    CALayer* superlayer = nullptr;
    std::vector<std::shared_ptr<CALayer>> sublayers;
    std::vector<std::shared_ptr<CIFilter>> filters;
    std::string cornerCurve{kCACornerCurveCircular};
    std::shared_ptr<const CGImage> contents;
    std::function<void(CGContext&)> draw;
    std::unique_ptr<LayerRecording> drawn;
    ActionPolicy policy;
    std::function<void()> treeChanged;

    /// Calls `body` with each value that may run.
    template <class Body>
    void forEachAnimated(const Body& body) {
        body(position);
        body(bounds);
        body(transform);
        body(opacity);
        body(backgroundColor);
        body(borderColor);
        body(borderWidth);
        body(cornerRadius);
        body(shadowColor);
        body(shadowOpacity);
        body(shadowOffset);
        body(shadowRadius);
    }
};

}  // namespace zqcore::platform
