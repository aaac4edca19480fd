#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "Platform/Base/Export.h"
#include "Platform/Graphics/CGColor.h"
#include "Platform/Graphics/PixelBuffer.h"

namespace zqcore::platform {

// How the bytes of a pixel lie: alpha first and multiplied (2), in 32-bit words of this machine (2 << 12).
inline constexpr std::uint32_t kCGImageAlphaPremultipliedFirst = 2;
inline constexpr std::uint32_t kCGBitmapByteOrder32Host = 2U << 12;

inline constexpr std::string_view kCGColorSpaceSRGB = "kCGColorSpaceSRGB";

/// A picture of whole pixels that never changes: 8 bits a channel, four channels, multiplied by alpha.
/// Threads: any. Lifetime: shared; the pixels are shared with who made them, and copied when that one draws
/// on.
class ZQ_EXPORT CGImage final {
  public:
    /// Null if there are no pixels. The buffer must not be written any more.
    [[nodiscard]] static std::shared_ptr<const CGImage> make(std::shared_ptr<const PixelBuffer> pixels);

    [[nodiscard]] int width() const noexcept { return pixels_->width(); }
    [[nodiscard]] int height() const noexcept { return pixels_->height(); }
    [[nodiscard]] std::size_t bytesPerRow() const noexcept { return pixels_->bytesPerRow(); }
    [[nodiscard]] int bitsPerComponent() const noexcept { return 8; }
    [[nodiscard]] int bitsPerPixel() const noexcept { return 32; }
    [[nodiscard]] std::string_view colorSpace() const noexcept { return kCGColorSpaceSRGB; }
    [[nodiscard]] std::uint32_t bitmapInfo() const noexcept {
        return kCGImageAlphaPremultipliedFirst | kCGBitmapByteOrder32Host;
    }

    /// The colour of a pixel, counted from the upper left corner, alpha divided out; clear outside.
    [[nodiscard]] CGColor colorAt(int x, int y) const noexcept;
    [[nodiscard]] const std::shared_ptr<const PixelBuffer>& pixels() const noexcept { return pixels_; }

  private:
    explicit CGImage(std::shared_ptr<const PixelBuffer> pixels) noexcept : pixels_(std::move(pixels)) {}

    std::shared_ptr<const PixelBuffer> pixels_;
};

}  // namespace zqcore::platform
