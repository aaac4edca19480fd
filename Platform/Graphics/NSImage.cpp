// What NSImage does with pixels: the half of it that lies in the interface library.
#include "Platform/Foundation/NSImage.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Platform/Foundation/NSFileManager.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGImage.h"
#include "Platform/Graphics/NSBitmapImageRep.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSGraphicsContext.h"
#include "Platform/Graphics/ScreenScale.h"

namespace zqcore::platform {

/// A bitmap that is being drawn between `lockFocus` and `unlockFocus`.
struct NSImageFocus {
    std::shared_ptr<NSBitmapImageRep> bitmap;
    GraphicsContextScope scope;
};

namespace {

bool hasArea(CGSize size) { return size.width > 0 && size.height > 0; }

double scaleOf(const NSImageRep& form) {
    return form.size().width > 0 ? form.pixelsWide() / form.size().width : 0;
}

}  // namespace

std::shared_ptr<NSImage> NSImage::make(CGSize size) { return makeObject<NSImage>(size); }

std::shared_ptr<NSImage> NSImage::make(const std::shared_ptr<const CGImage>& image, CGSize size) {
    auto bitmap = NSBitmapImageRep::make(image);
    if (!bitmap) return nullptr;
    if (hasArea(size)) bitmap->setSize(size);
    auto made = make(bitmap->size());
    made->addRepresentation(std::move(bitmap));
    return made;
}

std::shared_ptr<NSImage> NSImage::make(const Data& data) {
    auto bitmap = NSBitmapImageRep::imageRepWithData(data);
    if (!bitmap) return nullptr;
    auto made = make(bitmap->size());
    made->addRepresentation(std::move(bitmap));
    return made;
}

std::shared_ptr<NSImage> NSImage::makeWithContentsOfFile(const std::string& path) {
    const auto bytes = encodedBytes({path});
    return bytes ? make(*bytes) : nullptr;
}

std::shared_ptr<NSImage> NSImage::imageWithSize(CGSize size, bool flipped, DrawingHandler handler) {
    auto made = make(size);
    made->addRepresentation(NSCustomImageRep::make(size, flipped, std::move(handler)));
    return made;
}

void NSImage::readFiles() const {
    std::call_once(filesRead_, [this] {
        for (const File& file : files_) {
            const auto bytes = encodedBytes(file);
            auto bitmap = bytes ? NSBitmapImageRep::imageRepWithData(*bytes) : nullptr;
            if (!bitmap) continue;
            // The name tells the scale; what the file says of its resolution doesn't count.
            const CGSize points{CGFloat(bitmap->pixelsWide()) / file.scale,
                                CGFloat(bitmap->pixelsHigh()) / file.scale};
            if (representations_.empty()) size_ = points;
            bitmap->setSize(size_);
            representations_.push_back(std::move(bitmap));
        }
    });
}

CGSize NSImage::size() const {
    readFiles();
    return size_;
}

void NSImage::setSize(CGSize size) {
    readFiles();
    size_ = size;
}

const std::vector<std::shared_ptr<NSImageRep>>& NSImage::representations() const {
    readFiles();
    return representations_;
}

void NSImage::addRepresentation(std::shared_ptr<NSImageRep> representation) {
    readFiles();
    if (!representation) return;
    if (representations_.empty() && !hasArea(size_)) size_ = representation->size();
    representations_.push_back(std::move(representation));
}

void NSImage::removeRepresentation(const std::shared_ptr<NSImageRep>& representation) {
    readFiles();
    std::erase(representations_, representation);
}

std::shared_ptr<NSImage> NSImage::copy() const {
    auto made = make(size());
    made->representations_ = representations_;
    made->name_ = name_;
    made->isTemplate_ = isTemplate_;
    return made;
}

std::shared_ptr<NSImageRep> NSImage::bestRepresentation(double scale) const {
    std::shared_ptr<NSImageRep> best;
    for (const auto& form : representations()) {
        if (form->pixelsWide() == 0) return form;
        const double own = scaleOf(*form);
        const double present = best ? scaleOf(*best) : 0;
        const bool better = present < scale ? own > present : own >= scale && own < present;
        if (!best || better) best = form;
    }
    return best;
}

std::shared_ptr<const CGImage> NSImage::cgImageForProposedRect() const {
    const auto form = bestRepresentation(mainScreenScale());
    if (!form) return nullptr;
    if (form->pixelsWide() > 0 || form->size() == size_) return form->cgImage(mainScreenScale());
    // A drawn form in an image of another size is stretched to it.
    const auto stretched = NSCustomImageRep::make(size_, false, [&](const CGRect& rect) {
        form->draw(*NSGraphicsContext::currentContext()->cgContext(), rect);
        return true;
    });
    return stretched->cgImage(mainScreenScale());
}

std::optional<Data> NSImage::TIFFRepresentation() const {
    const auto bitmap = NSBitmapImageRep::make(cgImageForProposedRect());
    if (!bitmap) return std::nullopt;
    if (hasArea(size_)) bitmap->setSize(size_);
    return bitmap->TIFFRepresentation();
}

void NSImage::draw(CGContext& context, const CGRect& rect, double fraction) const {
    const CGAffineTransform toPixels = context.ctm();
    const double points = std::max(size().width, 1e-9);
    const auto form = bestRepresentation(std::hypot(toPixels.a, toPixels.b) * rect.size.width / points);
    if (!form) return;
    if (fraction >= 1) return form->draw(context, rect);
    context.beginTransparencyLayer(fraction);
    form->draw(context, rect);
    context.endTransparencyLayer();
}

void NSImage::drawTinted(CGContext& context, const CGRect& rect, const std::shared_ptr<NSColor>& tint) const {
    if (!isTemplate_) return draw(context, rect);
    const auto shown = tint ? tint : NSColor::labelColor();
    // What a bitmap can't do in one step: the image as a group, its colours replaced where it is opaque.
    context.beginTransparencyLayer();
    draw(context, rect);
    context.setBlendMode(CGBlendMode::sourceIn);
    context.setFillColor(shown->cgColor());
    context.fill(rect);
    context.endTransparencyLayer();
}

void NSImage::drawInRect(const CGRect& rect) const {
    if (const auto current = NSGraphicsContext::currentContext()) draw(*current->cgContext(), rect);
}

void NSImage::lockFocus() {
    if (focus_) return;
    const CGSize points = size();
    const double scale = mainScreenScale();
    NSBitmapImageRep::Format format;
    constexpr double largest = PixelBuffer::kLargestSide;
    if (hasArea(points) && points.width * scale <= largest && points.height * scale <= largest) {
        format.pixelsWide = std::llround(std::ceil(points.width * scale));
        format.pixelsHigh = std::llround(std::ceil(points.height * scale));
    }
    auto bitmap = NSBitmapImageRep::make(format);
    const auto context = bitmap ? bitmap->makeContext() : nullptr;
    if (context) {
        bitmap->setSize(points);
        context->scaleBy(CGFloat(format.pixelsWide) / points.width,
                         CGFloat(format.pixelsHigh) / points.height);
        draw(*context, {{}, points});
    }
    // Without a bitmap there is no current context until the focus ends, so that what is drawn for this image
    // doesn't land on the one outside.
    focus_ =
        std::shared_ptr<NSImageFocus>(new NSImageFocus{std::move(bitmap), GraphicsContextScope(context)});
}

void NSImage::unlockFocus() {
    if (!focus_) return;
    if (focus_->bitmap) representations_.assign(1, focus_->bitmap);
    focus_.reset();
}

}  // namespace zqcore::platform
