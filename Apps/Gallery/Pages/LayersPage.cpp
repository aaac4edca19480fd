// Layers: what a view's layer can look like by itself.

#include <cmath>
#include <numbers>

#include "Apps/Gallery/GalleryPage.h"
#include "Apps/Gallery/Sheet.h"
#include "Platform/Graphics/CGPath.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/QuartzCore/CAGradientLayer.h"
#include "Platform/QuartzCore/CAShapeLayer.h"

namespace gallery {

namespace {

constexpr CGSize kBox{84, 60};
constexpr CGColor kBlue = CGColor::rgb(0.22, 0.48, 0.9);
constexpr CGColor kOrange = CGColor::rgb(0.97, 0.55, 0.2);
constexpr CGColor kPink = CGColor::rgb(0.93, 0.32, 0.5);

/// A view whose layer is of that class, filled.
template <class Layer = CALayer>
std::shared_ptr<Layer> layerOf(const std::shared_ptr<NSView>& view) {
    auto layer = makeObject<Layer>();
    view->setLayer(layer);
    view->setWantsLayer(true);
    return layer;
}

std::shared_ptr<NSView> box(CGSize size = kBox) { return makeObject<NSView>(CGRect{{}, size}); }

void addCorners(Sheet& sheet) {
    sheet.setGap(14);
    sheet.beginRow("Corners and borders");
    for (const int radius : {0, 8, 20, 30}) {
        const auto view = box();
        const auto layer = layerOf(view);
        layer->setBackgroundColor(kBlue);
        layer->setCornerRadius(radius);
        sheet.add(view, "radius " + std::to_string(radius));
    }
    for (const int width : {1, 4}) {
        const auto view = box();
        const auto layer = layerOf(view);
        layer->setBackgroundColor(kBlue.withAlpha(0.15));
        layer->setCornerRadius(8);
        layer->setBorderColor(kBlue);
        layer->setBorderWidth(width);
        sheet.add(view, "border " + std::to_string(width));
    }
    const auto view = box();
    const auto layer = layerOf(view);
    layer->setBackgroundColor(kBlue.withAlpha(0.25));
    layer->setCornerRadius(20);
    layer->setMasksToBounds(true);
    const auto inner = makeObject<NSView>(CGRect{{-10, -16}, {60, 60}});
    layerOf(inner)->setBackgroundColor(kOrange);
    inner->layer()->setCornerRadius(30);
    view->addSubview(inner);
    sheet.add(view, "masks to bounds");
}

void addShadows(Sheet& sheet) {
    sheet.beginRow("Shadows and opacity");
    struct Shadow {
        const char* caption;
        CGSize offset;
        CGFloat radius;
        CGColor color;
    };
    const Shadow shadows[] = {{"soft, all round", {0, 0}, 6, CGColor::white(0)},
                              {"down, as cards", {0, -3}, 3, CGColor::white(0)},
                              {"to the right", {5, -5}, 1, CGColor::white(0)},
                              {"in colour", {0, 0}, 8, kPink}};
    for (const Shadow& shadow : shadows) {
        const auto view = box();
        const auto layer = layerOf(view);
        layer->setBackgroundColor(NSColor::controlBackgroundColor()->cgColor());
        layer->setCornerRadius(8);
        layer->setShadowColor(shadow.color);
        layer->setShadowOpacity(shadow.color == kPink ? 1 : 0.5F);
        layer->setShadowOffset(shadow.offset);
        layer->setShadowRadius(shadow.radius);
        sheet.add(view, shadow.caption);
    }
    // Two halves that overlap: through the group's opacity nothing of the lower one shows.
    const auto group = box();
    for (const int i : {0, 1}) {
        const auto part = makeObject<NSView>(CGRect{{i * 24.0, i * 14.0}, {60, 46}});
        layerOf(part)->setBackgroundColor(i == 0 ? kBlue : kOrange);
        part->layer()->setCornerRadius(6);
        group->addSubview(part);
    }
    group->setAlphaValue(0.5);
    sheet.add(group, "opacity 0.5, as one group");
}

void addGradients(Sheet& sheet) {
    sheet.beginRow("Gradients and shapes");
    struct Gradient {
        const char* caption;
        std::vector<CGColor> colors;
        std::vector<CGFloat> locations;
        CGPoint start, end;
        CGFloat radius;
    };
    const Gradient gradients[] = {
        {"upwards", {kBlue, CGColor::rgb(0.6, 0.8, 1)}, {}, {0.5, 0}, {0.5, 1}, 0},
        {"three stops", {kBlue, kPink, kOrange}, {0, 0.3, 1}, {0, 0}, {1, 1}, 10},
        {"to clear", {kPink, kPink.withAlpha(0)}, {}, {0, 0.5}, {1, 0.5}, 30},
    };
    for (const Gradient& gradient : gradients) {
        const auto view = box();
        const auto layer = layerOf<CAGradientLayer>(view);
        layer->setColors(gradient.colors);
        layer->setLocations(gradient.locations);
        layer->setStartPoint(gradient.start);
        layer->setEndPoint(gradient.end);
        layer->setCornerRadius(gradient.radius);
        sheet.add(view, gradient.caption);
    }
}

void addShapes(Sheet& sheet) {
    const CGColor track = NSColor::separatorColor()->cgColor();
    for (const CGFloat part : {0.25, 0.7, 1.0}) {
        const auto view = box({60, 60});
        const auto ring = CGPath::make();
        // From the top, clockwise.
        ring->addArc({30, 30}, 24, std::numbers::pi / 2, -1.5 * std::numbers::pi, true);
        const auto ground = layerOf<CAShapeLayer>(view);
        ground->setPath(ring);
        ground->setFillColor(CGColor::clear());
        ground->setStrokeColor(track);
        ground->setLineWidth(6);
        const auto done = makeObject<CAShapeLayer>();
        done->setFrame(CGRect{{}, {60, 60}});
        done->setPath(ring);
        done->setFillColor(CGColor::clear());
        done->setStrokeColor(part < 1 ? kBlue : CGColor::rgb(0.2, 0.7, 0.35));
        done->setLineWidth(6);
        done->setLineCap(kCALineCapRound);
        done->setStrokeEnd(part);
        view->layer()->addSublayer(done);
        sheet.add(view, "stroke to " + std::to_string(static_cast<int>(std::lround(part * 100))) + " %");
    }
    const auto view = box({60, 60});
    const auto star = CGPath::make();
    for (int i = 0; i < 10; ++i) {
        const CGFloat radius = i % 2 == 0 ? 29 : 12;
        const CGFloat angle = std::numbers::pi * (0.5 + i / 5.0);
        const CGPoint point{30 + radius * std::cos(angle), 28 + radius * std::sin(angle)};
        if (i == 0)
            star->moveTo(point);
        else
            star->lineTo(point);
    }
    star->close();
    const auto shape = layerOf<CAShapeLayer>(view);
    shape->setPath(star);
    shape->setFillColor(kOrange);
    sheet.add(view, "a path");
}

void fill(Sheet& sheet) {
    addCorners(sheet);
    addShadows(sheet);
    addGradients(sheet);
    addShapes(sheet);
}

}  // namespace

const GalleryPage kLayersPage{"layers", "Layers",
                              "Corners, borders, shadows, gradients and shapes of a view's layer", fill};

}  // namespace gallery
