#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "Platform/Base/Data.h"
#include "Platform/Base/Export.h"
#include "Platform/Graphics/CGColor.h"
#include "Platform/Graphics/NSImageRep.h"
#include "Platform/Graphics/PixelBuffer.h"

namespace zqcore::platform {

enum class NSBitmapImageFileType { tiff = 0, bmp = 1, gif = 2, jpeg = 3, png = 4 };

inline constexpr unsigned NSBitmapFormatAlphaFirst = 1;
inline constexpr std::string_view NSDeviceRGBColorSpace = "NSDeviceRGBColorSpace";
inline constexpr std::string_view NSCalibratedRGBColorSpace = "NSCalibratedRGBColorSpace";

/// A form of an image made of pixels: 8 bits a sample, four samples, multiplied by alpha; files of any other
/// kind are turned into that when they are read. Its size in points is apart from its pixels.
/// Threads: one at a time. Failure: makers give a null pointer, writers no data.
class ZQ_EXPORT NSBitmapImageRep final : public NSImageRep {
  public:
    /// What the platform's maker without data planes takes.
    struct Format {
        std::int64_t pixelsWide = 0;
        std::int64_t pixelsHigh = 0;
        int bitsPerSample = 8;
        int samplesPerPixel = 4;
        bool hasAlpha = true;
        bool isPlanar = false;
        std::string_view colorSpaceName = NSDeviceRGBColorSpace;
        unsigned bitmapFormat = NSBitmapFormatAlphaFirst;
        std::size_t bytesPerRow = 0;  ///< 0: 4 times the width, the one value beside it that is taken
        int bitsPerPixel = 0;         ///< 0 or 32
    };

    /// Transparent pixels, a point each; null for any format but ours and for sides a bitmap can't have.
    [[nodiscard]] static std::shared_ptr<NSBitmapImageRep> make(const Format& format);
    [[nodiscard]] static std::shared_ptr<NSBitmapImageRep> make(const std::shared_ptr<const CGImage>& image);
    /// Reads PNG, JPEG, TIFF, GIF, BMP, ICO and what else the system's loaders read; the size follows the
    /// resolution that the file tells, 72 pixels an inch without. Null for bytes that are none of these,
    /// that end too early, or that claim more than 64 million pixels.
    [[nodiscard]] static std::shared_ptr<NSBitmapImageRep> imageRepWithData(const Data& data);

    [[nodiscard]] int pixelsWide() const noexcept override { return pixels_->width(); }
    [[nodiscard]] int pixelsHigh() const noexcept override { return pixels_->height(); }
    [[nodiscard]] int bitsPerSample() const noexcept { return 8; }
    [[nodiscard]] int samplesPerPixel() const noexcept { return 4; }
    [[nodiscard]] std::size_t bytesPerRow() const noexcept { return pixels_->bytesPerRow(); }
    /// Counted from the upper left corner; clear outside.
    [[nodiscard]] CGColor colorAt(int x, int y) const;

    void draw(CGContext& context, const CGRect& rect) const override;
    /// The pixels as they stand; later drawing into this bitmap doesn't reach the image.
    [[nodiscard]] std::shared_ptr<const CGImage> cgImage(double scale = 1) const override;
    /// A context that draws into the pixels.
    [[nodiscard]] std::shared_ptr<CGContext> makeContext();

    /// The file's bytes: TIFF, JPEG or PNG, others are absent. `compressionFactor` from 0 to 1 is the quality
    /// of a JPEG (`NSImageCompressionFactor`), which shows white under what is transparent.
    [[nodiscard]] std::optional<Data> representationUsingType(
        NSBitmapImageFileType type, std::optional<double> compressionFactor = std::nullopt) const;
    [[nodiscard]] std::optional<Data> TIFFRepresentation() const {
        return representationUsingType(NSBitmapImageFileType::tiff);
    }

  private:
    template <class T, class... Arguments>
    friend std::shared_ptr<T> makeObject(Arguments&&...);
    NSBitmapImageRep(std::shared_ptr<PixelBuffer> pixels, CGSize size)
        : NSImageRep(size), pixels_(std::move(pixels)) {}

    // Shared with the images and contexts that were made of it; copied before a write reaches an image.
    std::shared_ptr<PixelBuffer> pixels_;
    std::weak_ptr<CGContext> writer_;
    mutable bool imageTaken_ = false;
};

}  // namespace zqcore::platform
