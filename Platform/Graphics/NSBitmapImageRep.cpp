#include "Platform/Graphics/NSBitmapImageRep.h"

#include <utility>

#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGImage.h"
#include "Platform/Graphics/ImageCoding.h"

namespace zqcore::platform {

std::shared_ptr<NSBitmapImageRep> NSBitmapImageRep::make(const Format& format) {
    const bool ours = format.bitsPerSample == 8 && format.samplesPerPixel == 4 && format.hasAlpha &&
                      !format.isPlanar && format.bitmapFormat == NSBitmapFormatAlphaFirst &&
                      (format.bitsPerPixel == 0 || format.bitsPerPixel == 32) &&
                      (format.colorSpaceName == NSDeviceRGBColorSpace ||
                       format.colorSpaceName == NSCalibratedRGBColorSpace);
    if (!ours) return nullptr;
    auto pixels = PixelBuffer::make(format.pixelsWide, format.pixelsHigh);
    if (!pixels || (format.bytesPerRow != 0 && format.bytesPerRow != pixels->bytesPerRow())) return nullptr;
    const CGSize size{CGFloat(pixels->width()), CGFloat(pixels->height())};
    return makeObject<NSBitmapImageRep>(std::move(pixels), size);
}

std::shared_ptr<NSBitmapImageRep> NSBitmapImageRep::make(const std::shared_ptr<const CGImage>& image) {
    if (!image) return nullptr;
    const CGSize size{CGFloat(image->width()), CGFloat(image->height())};
    // Never written to while an image has it: makeContext copies then.
    auto made = makeObject<NSBitmapImageRep>(std::const_pointer_cast<PixelBuffer>(image->pixels()), size);
    made->imageTaken_ = true;
    return made;
}

std::shared_ptr<NSBitmapImageRep> NSBitmapImageRep::imageRepWithData(const Data& data) {
    auto decoded = decodeImage(data.view());
    if (!decoded.pixels) return nullptr;
    return makeObject<NSBitmapImageRep>(std::move(decoded.pixels), decoded.size);
}

CGColor NSBitmapImageRep::colorAt(int x, int y) const {
    if (const auto writer = writer_.lock()) writer->flush();
    return CGImage::make(pixels_)->colorAt(x, y);
}

void NSBitmapImageRep::draw(CGContext& context, const CGRect& rect) const {
    context.drawImage(*CGImage::make(pixels_), rect);
}

std::shared_ptr<const CGImage> NSBitmapImageRep::cgImage(double) const {
    if (const auto writer = writer_.lock()) return writer->makeImage();
    imageTaken_ = true;
    return CGImage::make(pixels_);
}

std::shared_ptr<CGContext> NSBitmapImageRep::makeContext() {
    if (const auto writer = writer_.lock()) return writer;
    if (imageTaken_) {
        auto own = pixels_->copy();
        if (!own) return nullptr;
        pixels_ = std::move(own);
        imageTaken_ = false;
    }
    auto context = CGContext::bitmap(pixels_);
    writer_ = context;
    return context;
}

std::optional<Data> NSBitmapImageRep::representationUsingType(NSBitmapImageFileType type,
                                                              std::optional<double> compressionFactor) const {
    if (const auto writer = writer_.lock()) writer->flush();
    switch (type) {
        case NSBitmapImageFileType::png:
            return encodePNG(*pixels_, size());
        case NSBitmapImageFileType::jpeg:
            return encodeJPEG(*pixels_, size(), compressionFactor.value_or(0.8));
        case NSBitmapImageFileType::tiff:
            return encodeTIFF(*pixels_, size());
        case NSBitmapImageFileType::bmp:
        case NSBitmapImageFileType::gif:
            break;
    }
    return std::nullopt;
}

}  // namespace zqcore::platform
