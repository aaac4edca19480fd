#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Data.h"
#include "Platform/Base/Export.h"
#include "Platform/Graphics/PixelBuffer.h"

// Pixels to files and back. Threads: any. Sizes are in points; a file tells them as its resolution, 72 pixels
// an inch being a point each.
namespace zqcore::platform {

struct DecodedImage {
    std::shared_ptr<PixelBuffer> pixels;  ///< null if the bytes are no whole image
    CGSize size;
};

/// More pixels than this aren't decoded: 256 MB.
inline constexpr std::int64_t kMostImagePixels = std::int64_t{1} << 26;

[[nodiscard]] ZQ_EXPORT DecodedImage decodeImage(std::string_view bytes);

/// libpng at level 1 with the Sub filter; opaque pixels are written without alpha.
[[nodiscard]] ZQ_EXPORT std::optional<Data> encodePNG(const PixelBuffer& pixels, CGSize size);
/// `quality` from 0 to 1; from 0.9 up colours keep every pixel. White shows under what is transparent.
[[nodiscard]] ZQ_EXPORT std::optional<Data> encodeJPEG(const PixelBuffer& pixels, CGSize size,
                                                       double quality);
/// TIFF 6.0, one uncompressed strip of RGBA, multiplied by alpha as it lies in the buffer.
[[nodiscard]] ZQ_EXPORT std::optional<Data> encodeTIFF(const PixelBuffer& pixels, CGSize size);
/// Reads what `encodeTIFF` wrote; other forms of TIFF give nothing here.
[[nodiscard]] ZQ_EXPORT DecodedImage decodePlainTIFF(std::string_view bytes);

/// Pixels an inch along a side.
[[nodiscard]] ZQ_EXPORT double resolutionOf(int pixels, CGFloat points) noexcept;

enum class ImageFileKind { unknown, png, jpeg, gif, bmp, tiff };

/// What the outer form of image bytes tells without decoding.
struct ImageOutline {
    ImageFileKind kind = ImageFileKind::unknown;
    /// Whether the end is there. Loaders take a file that was cut in half without a word.
    bool complete = false;
    std::int64_t width = 0;  ///< 0 if it can't be told
    std::int64_t height = 0;
};

[[nodiscard]] ZQ_EXPORT ImageOutline outlineOf(std::string_view bytes) noexcept;

}  // namespace zqcore::platform
