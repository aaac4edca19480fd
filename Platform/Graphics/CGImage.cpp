#include "Platform/Graphics/CGImage.h"

#include <utility>

namespace zqcore::platform {

std::shared_ptr<const CGImage> CGImage::make(std::shared_ptr<const PixelBuffer> pixels) {
    if (!pixels) return nullptr;
    return std::shared_ptr<const CGImage>(new CGImage(std::move(pixels)));
}

CGColor CGImage::colorAt(int x, int y) const noexcept {
    if (x < 0 || y < 0 || x >= width() || y >= height()) return {};
    const std::uint32_t pixel = pixels_->row(y)[x];
    const CGFloat alpha = pixel >> 24;
    if (alpha == 0) return {};
    return {((pixel >> 16) & 0xff) / alpha, ((pixel >> 8) & 0xff) / alpha, (pixel & 0xff) / alpha,
            alpha / 255};
}

}  // namespace zqcore::platform
