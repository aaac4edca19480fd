#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// The pixels of a bitmap: rows from the top, one 32-bit word a pixel, alpha in the high byte, then red,
/// green and blue, each multiplied by alpha. Transparent when new. Threads: any for reading; one for writing.
/// Lifetime: shared by the images and contexts that show it. Failure: `make` gives a null pointer for sides
/// outside 1 to 32767, rows that are too short or no multiple of four, more than 1 GiB, or no memory.
class ZQ_EXPORT PixelBuffer final {
  public:
    static constexpr std::int64_t kLargestSide = 32767;

    /// `bytesPerRow` of 0 means 4 times the width.
    [[nodiscard]] static std::shared_ptr<PixelBuffer> make(std::int64_t width, std::int64_t height,
                                                           std::size_t bytesPerRow = 0) noexcept;
    ~PixelBuffer();
    PixelBuffer(const PixelBuffer&) = delete;
    PixelBuffer& operator=(const PixelBuffer&) = delete;

    /// A copy with pixels of its own, or a null pointer without memory.
    [[nodiscard]] std::shared_ptr<PixelBuffer> copy() const noexcept;

    [[nodiscard]] int width() const noexcept { return width_; }
    [[nodiscard]] int height() const noexcept { return height_; }
    [[nodiscard]] std::size_t bytesPerRow() const noexcept { return bytesPerRow_; }
    [[nodiscard]] std::uint32_t* row(int y) noexcept { return pixels_ + rowStart(y); }
    [[nodiscard]] const std::uint32_t* row(int y) const noexcept { return pixels_ + rowStart(y); }

  private:
    PixelBuffer(int width, int height, std::size_t bytesPerRow, std::uint32_t* pixels) noexcept
        : width_(width), height_(height), bytesPerRow_(bytesPerRow), pixels_(pixels) {}
    [[nodiscard]] std::size_t rowStart(int y) const noexcept {
        return static_cast<std::size_t>(y) * (bytesPerRow_ / sizeof(std::uint32_t));
    }

    int width_;
    int height_;
    std::size_t bytesPerRow_;
    std::uint32_t* pixels_;
};

}  // namespace zqcore::platform
