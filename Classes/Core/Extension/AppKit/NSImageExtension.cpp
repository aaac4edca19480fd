#include "Classes/Core/Extension/AppKit/NSImageExtension.h"

#include <cmath>

#include "Classes/Core/Extension/NSFileManagerExtension.h"
#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Foundation/NSFileManager.h"
#include "Platform/Foundation/NSImage.h"
#include "Platform/Foundation/NSPath.h"
#include "Platform/Foundation/Text/Base64.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGImage.h"
#include "Platform/Graphics/NSBitmapImageRep.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSGraphicsContext.h"

namespace zqcore {

using platform::CGContext;
using platform::CGFloat;
using platform::CGImage;
using platform::CGSize;
using platform::Data;
using platform::NSBitmapImageFileType;
using platform::NSBitmapImageRep;
using platform::NSImage;

namespace {

/// Cut to an integer; 0, which no bitmap can have, for what is no number or far too large.
std::int64_t wholePixels(CGFloat side) {
    constexpr CGFloat tooLarge = 1e15;
    return std::abs(side) < tooLarge ? static_cast<std::int64_t>(side) : 0;
}

std::optional<Data> fileData(const NSImage& image, NSBitmapImageFileType type,
                             std::optional<double> compressionFactor) {
    const auto tiff = image.TIFFRepresentation();
    const auto bitmap = tiff ? NSBitmapImageRep::imageRepWithData(*tiff) : nullptr;
    return bitmap ? bitmap->representationUsingType(type, compressionFactor) : std::nullopt;
}

template <class MakeData>
bool writeToFile(std::string_view path, const MakeData& makeData, const std::source_location& where) {
    if (path.empty()) return false;
    const std::string folder = platform::stringByDeletingLastPathComponent(path);
    if (folder.empty()) return false;
    const auto& manager = platform::NSFileManager::defaultManager();
    if (!zq_createDirectoryIfNotExist(manager, folder)) return false;
    const std::optional<Data> data = makeData();
    if (!data) return false;
    const auto written = manager.writeAtomically(data->view(), path);
    if (!written) {
        ZQLogError([&] { return "写入文件失败：" + written.error().description(); }, nullptr, where);
    }
    return written.has_value();
}

}  // namespace

std::shared_ptr<NSImage> zq_image(const std::shared_ptr<const CGImage>& withCGImage) {
    return NSImage::make(withCGImage);
}

std::shared_ptr<NSImage> zq_image(CGSize withSize, const DrawFunction& graphicsContext) {
    auto image = NSImage::make(withSize);
    NSBitmapImageRep::Format format;
    format.pixelsWide = wholePixels(withSize.width);
    format.pixelsHigh = wholePixels(withSize.height);
    const auto bitmap = NSBitmapImageRep::make(format);
    const auto context = bitmap ? bitmap->makeContext() : nullptr;
    if (!context) return image;
    {
        const platform::GraphicsContextScope scope(context);
        if (graphicsContext) graphicsContext(*context);
    }
    image->addRepresentation(bitmap);
    return image;
}

std::shared_ptr<NSImage> zq_image(std::string_view withBase64String) {
    auto bytes = platform::decodeBase64(withBase64String);
    return bytes ? NSImage::make(Data(*std::move(bytes))) : nullptr;
}

std::shared_ptr<const CGImage> zq_cgImage(const NSImage& image) { return image.cgImageForProposedRect(); }

CGSize zq_pixelSize(const NSImage& image) {
    const auto pixels = zq_cgImage(image);
    return pixels ? CGSize{CGFloat(pixels->width()), CGFloat(pixels->height())} : CGSize{};
}

std::optional<Data> zq_PNGData(const NSImage& image) {
    return fileData(image, NSBitmapImageFileType::png, std::nullopt);
}

std::optional<Data> zq_JPEGData(const NSImage& image) {
    return fileData(image, NSBitmapImageFileType::jpeg, 1.0);
}

std::string zq_base64String(const NSImage& image) {
    const auto data = zq_PNGData(image);
    return data ? platform::encodeBase64(data->view()) : std::string();
}

bool zq_writeToFileAsPNG(const NSImage& image, std::string_view path, const std::source_location& where) {
    return writeToFile(
        path, [&] { return zq_PNGData(image); }, where);
}

bool zq_writeToFileAsJPEG(const NSImage& image, std::string_view path, const std::source_location& where) {
    return writeToFile(
        path, [&] { return zq_JPEGData(image); }, where);
}

std::shared_ptr<NSImage> zq_tint(const NSImage& image, const platform::NSColor& color) {
    auto tinted = image.copy();
    tinted->lockFocus();
    color.set();
    platform::NSRectFillUsingOperation({{}, tinted->size()}, platform::NSCompositingOperation::sourceAtop);
    tinted->unlockFocus();
    return tinted;
}

std::shared_ptr<NSImage> zq_resizeImage(const NSImage& image, CGSize size) {
    const auto source = zq_cgImage(image);
    if (!source) return nullptr;
    const auto context = CGContext::bitmapContextCreate(wholePixels(size.width), wholePixels(size.height),
                                                        source->bitsPerComponent(), source->bytesPerRow(),
                                                        source->bitmapInfo());
    if (!context) return nullptr;
    context->setInterpolationQuality(platform::CGInterpolationQuality::high);
    context->drawImage(*source, {{}, size});
    return NSImage::make(context->makeImage(), size);
}

std::shared_ptr<NSImage> zq_resizeImage(const NSImage& image, BoxSize boxSize) {
    const CGSize own = image.size();
    if (!(boxSize.width > 0 && boxSize.height > 0 && own.width > 0 && own.height > 0)) return nullptr;
    const CGFloat ratio = own.width / own.height;
    const bool widthRules = boxSize.width / boxSize.height <= ratio;
    return zq_resizeImage(image, widthRules ? CGSize{boxSize.width, boxSize.width / ratio}
                                            : CGSize{ratio * boxSize.height, boxSize.height});
}

}  // namespace zqcore
