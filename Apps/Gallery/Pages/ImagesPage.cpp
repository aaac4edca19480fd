// Images: forms at two scales, templates in a tint, copies that were tinted and fitted into a box.

#include "Apps/Gallery/GalleryPage.h"
#include "Apps/Gallery/Sheet.h"
#include "Classes/Bundle/ZQCoreBundle.h"
#include "Classes/Core/Extension/AppKit/NSColorExtension.h"
#include "Classes/Core/Extension/AppKit/NSImageExtension.h"
#include "Platform/AppKit/NSImageView.h"
#include "Platform/Foundation/NSBundle.h"
#include "Platform/Foundation/NSImage.h"
#include "Platform/Graphics/CGPath.h"
#include "Platform/Graphics/NSBezierPath.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/QuartzCore/CALayer.h"

namespace gallery {

namespace {

std::shared_ptr<NSImageView> imageView(const std::shared_ptr<NSImage>& image, CGSize size,
                                       NSImageScaling scaling = NSImageScaling::proportionallyDown) {
    auto view = makeObject<NSImageView>(CGRect{{}, size});
    view->setImage(image);
    view->setImageScaling(scaling);
    return view;
}

/// With a rule round the view, so that the image's place in it shows.
std::shared_ptr<NSImageView> ruled(std::shared_ptr<NSImageView> view) {
    view->setWantsLayer(true);
    view->layer()->setBorderWidth(1);
    view->layer()->setBorderColor(NSColor::separatorColor()->cgColor());
    return view;
}

std::shared_ptr<NSImage> own(std::string_view name) { return ZQCoreBundle::bundle()->imageForResource(name); }

/// Hills under a sun, drawn anew at each size.
std::shared_ptr<NSImage> landscape() {
    return NSImage::imageWithSize({120, 80}, false, [](const CGRect& to) {
        const CGFloat w = to.size.width;
        const CGFloat h = to.size.height;
        hexColor("#9CCBF2")->set();
        NSBezierPath::bezierPathWithRect(to)->fill();
        hexColor("#FFD34D")->set();
        NSBezierPath::bezierPathWithOvalInRect({{w * 0.68, h * 0.58}, {h * 0.3, h * 0.3}})->fill();
        struct Hill {
            const char* color;
            CGFloat left, top, right;
        };
        for (const Hill& hill : {Hill{"#5BA36B", 0.3, 0.62, 1.3}, Hill{"#3D8B58", -0.3, 0.5, 0.75}}) {
            hexColor(hill.color)->set();
            const auto path = NSBezierPath::bezierPath();
            path->moveToPoint({w * hill.left, 0});
            path->curveToPoint({w * hill.right, 0}, {w * (hill.left + 0.3), h * hill.top * 1.4},
                               {w * (hill.right - 0.3), h * hill.top * 1.4});
            path->closePath();
            path->fill();
        }
        return true;
    });
}

void addForms(Sheet& sheet) {
    sheet.beginRow("The library's own images, sharp at both scales");
    for (const char* name : {"tip_left_mouse", "tip_right_mouse", "hud_success", "hud_info", "hud_error",
                             "mini_hud_success", "mini_hud_fail"}) {
        const auto image = own(name);
        if (!image) continue;
        const auto view = imageView(image, image->size());
        // The HUD's images are white.
        if (std::string_view(name).starts_with("hud")) {
            view->setFrameSize({30, 30});
            view->setWantsLayer(true);
            view->layer()->setBackgroundColor(CGColor::white(0.25));
            view->layer()->setCornerRadius(5);
        }
        sheet.add(view, name);
    }
}

void addTints(Sheet& sheet) {
    const auto image = own("hud_success");
    if (!image) return;
    sheet.beginRow("Tints");
    const auto shape = image->copy();
    shape->setTemplate(true);
    sheet.add(imageView(shape, image->size()), "a template");
    const auto inTint = imageView(shape, image->size());
    inTint->setContentTintColor(NSColor::controlAccentColor());
    sheet.add(inTint, "in the accent colour");
    for (const char* color : {"#E8543F", "#34A853"})
        sheet.add(imageView(zq_tint(*image, *hexColor(color)), image->size()),
                  std::string("zq_tint ") + color);
}

void addSizes(Sheet& sheet) {
    sheet.beginRow("Sizes");
    const auto image = landscape();
    sheet.add(ruled(imageView(image, {120, 80})), "drawn by a function");
    sheet.add(ruled(imageView(zq_resizeImage(*image, BoxSize{60, 60}), {60, 60}, NSImageScaling::none)),
              "box 60 by 60");
    sheet.add(ruled(imageView(image, {120, 60}, NSImageScaling::proportionallyUpOrDown)), "proportionally");
    sheet.add(ruled(imageView(image, {120, 60}, NSImageScaling::axesIndependently)), "axes independently");
    sheet.add(ruled(imageView(image, {120, 60}, NSImageScaling::none)), "unscaled");
}

void fill(Sheet& sheet) {
    addForms(sheet);
    addTints(sheet);
    addSizes(sheet);
}

}  // namespace

const GalleryPage kImagesPage{"images", "Images", "Forms for two scales, tints, and ways to fill a rectangle",
                              fill};

}  // namespace gallery
