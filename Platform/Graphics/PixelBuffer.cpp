#include "Platform/Graphics/PixelBuffer.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace zqcore::platform {

namespace {

constexpr std::size_t kPixelBytes = 4;
constexpr std::size_t kMostBytes = std::size_t{1} << 30;

}  // namespace

std::shared_ptr<PixelBuffer> PixelBuffer::make(std::int64_t width, std::int64_t height,
                                               std::size_t bytesPerRow) noexcept {
    if (width < 1 || height < 1 || width > kLargestSide || height > kLargestSide) return nullptr;
    const std::size_t needed = static_cast<std::size_t>(width) * kPixelBytes;
    const std::size_t rowBytes = bytesPerRow == 0 ? needed : bytesPerRow;
    if (rowBytes < needed || rowBytes % kPixelBytes != 0) return nullptr;
    if (rowBytes > kMostBytes / static_cast<std::size_t>(height)) return nullptr;
    // calloc, since the kernel gives large blocks zeroed and only touched pages cost memory.
    auto* pixels = static_cast<std::uint32_t*>(std::calloc(static_cast<std::size_t>(height), rowBytes));
    if (!pixels) return nullptr;
    auto* made =
        new (std::nothrow) PixelBuffer(static_cast<int>(width), static_cast<int>(height), rowBytes, pixels);
    if (!made) {
        std::free(pixels);
        return nullptr;
    }
    return std::shared_ptr<PixelBuffer>(made);
}

PixelBuffer::~PixelBuffer() { std::free(pixels_); }

std::shared_ptr<PixelBuffer> PixelBuffer::copy() const noexcept {
    auto made = make(width_, height_, bytesPerRow_);
    if (made) std::memcpy(made->pixels_, pixels_, bytesPerRow_ * static_cast<std::size_t>(height_));
    return made;
}

}  // namespace zqcore::platform
