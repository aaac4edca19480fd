// The bytes of an image file: what decodes has the pixels that its outline told, and goes back into files
// that decode to the same size.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "Platform/Graphics/ImageCoding.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zqcore::platform;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const ImageOutline outline = outlineOf(bytes);
    const DecodedImage image = decodeImage(bytes);
    if (!image.pixels) return 0;
    if (!outline.complete) std::abort();
    if (image.pixels->width() < 1 || !(image.size.width > 0 && image.size.height > 0)) std::abort();
    // A file of some bytes may hold a large flat picture; writing each of them would only cost time.
    if (std::int64_t{image.pixels->width()} * image.pixels->height() > 1 << 16) return 0;
    for (const auto& file : {encodePNG(*image.pixels, image.size), encodeTIFF(*image.pixels, image.size)}) {
        if (!file) std::abort();
        const DecodedImage again = decodeImage(file->view());
        if (!again.pixels || again.pixels->width() != image.pixels->width()) std::abort();
    }
    if (!encodeJPEG(*image.pixels, image.size, 0.5)) std::abort();
    return 0;
}
