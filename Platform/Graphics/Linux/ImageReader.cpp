#include <gdk-pixbuf/gdk-pixbuf.h>

#include <cstdlib>
#include <memory>

#include "Platform/Base/Linux/ReleasedBy.h"
#include "Platform/Graphics/ImageCoding.h"

namespace zqcore::platform {

namespace {

using Loader = std::unique_ptr<GdkPixbufLoader, ReleasedBy<g_object_unref>>;
using Pixbuf = std::unique_ptr<GdkPixbuf, ReleasedBy<g_object_unref>>;

bool isTooLarge(std::int64_t width, std::int64_t height) {
    return width > PixelBuffer::kLargestSide || height > PixelBuffer::kLargestSide ||
           width * height > kMostImagePixels;
}

/// Loaders ask for memory right after this; a size of 0 makes them give up.
void refuseLargeSize(GdkPixbufLoader* loader, int width, int height, void*) {
    if (isTooLarge(width, height)) gdk_pixbuf_loader_set_size(loader, 0, 0);
}

const char* loaderName(ImageFileKind kind) {
    switch (kind) {
        case ImageFileKind::png:
            return "png";
        case ImageFileKind::jpeg:
            return "jpeg";
        case ImageFileKind::gif:
            return "gif";
        case ImageFileKind::bmp:
            return "bmp";
        case ImageFileKind::tiff:
            return "tiff";
        case ImageFileKind::unknown:
            break;
    }
    return nullptr;
}

Pixbuf load(std::string_view bytes, ImageFileKind kind) {
    const char* name = loaderName(kind);
    // Named, the loader needs no table of content types on the machine.
    Loader loader(name ? gdk_pixbuf_loader_new_with_type(name, nullptr) : gdk_pixbuf_loader_new());
    if (!loader) return nullptr;
    g_signal_connect(loader.get(), "size-prepared", G_CALLBACK(refuseLargeSize), nullptr);
    const bool taken = gdk_pixbuf_loader_write(loader.get(), reinterpret_cast<const guchar*>(bytes.data()),
                                               bytes.size(), nullptr) != FALSE;
    // A loader must be closed whatever happened before.
    const bool closed = gdk_pixbuf_loader_close(loader.get(), nullptr) != FALSE;
    if (!taken || !closed) return nullptr;
    GdkPixbuf* loaded = gdk_pixbuf_loader_get_pixbuf(loader.get());
    if (!loaded || isTooLarge(gdk_pixbuf_get_width(loaded), gdk_pixbuf_get_height(loaded))) return nullptr;
    return Pixbuf(gdk_pixbuf_apply_embedded_orientation(loaded));
}

std::uint32_t multiplied(std::uint32_t channel, std::uint32_t alpha) {
    // Division by 255 with rounding, exact for 16 bits.
    const std::uint32_t product = channel * alpha + 128;
    return (product + (product >> 8)) >> 8;
}

std::shared_ptr<PixelBuffer> pixelsOf(const GdkPixbuf& image) {
    const int width = gdk_pixbuf_get_width(&image);
    const int height = gdk_pixbuf_get_height(&image);
    const auto channels = static_cast<std::size_t>(gdk_pixbuf_get_n_channels(&image));
    auto pixels = PixelBuffer::make(width, height);
    if (!pixels || gdk_pixbuf_get_bits_per_sample(&image) != 8 || channels < 3) return nullptr;
    const auto rowBytes = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(&image));
    const guint8* bytes = gdk_pixbuf_read_pixels(&image);
    for (int y = 0; y < height; ++y) {
        const guint8* from = bytes + static_cast<std::size_t>(y) * rowBytes;
        std::uint32_t* row = pixels->row(y);
        for (int x = 0; x < width; ++x, from += channels) {
            const std::uint32_t alpha = channels == 4 ? from[3] : 255U;
            row[x] = alpha << 24 | multiplied(from[0], alpha) << 16 | multiplied(from[1], alpha) << 8 |
                     multiplied(from[2], alpha);
        }
    }
    return pixels;
}

/// Points along a side by the resolution that the file tells.
CGFloat pointsOf(GdkPixbuf* image, const char* option, int pixels) {
    const char* text = gdk_pixbuf_get_option(image, option);
    const double resolution = text ? std::strtod(text, nullptr) : 0;
    constexpr double pointsAnInch = 72;
    return resolution >= 1 && resolution <= 20000 ? pixels * pointsAnInch / resolution : pixels;
}

}  // namespace

DecodedImage decodeImage(std::string_view bytes) {
    if (bytes.empty()) return {};
    const ImageOutline outline = outlineOf(bytes);
    if (!outline.complete || isTooLarge(outline.width, outline.height)) return {};
    if (outline.kind == ImageFileKind::tiff) {
        if (auto own = decodePlainTIFF(bytes); own.pixels) return own;
    }
    const Pixbuf image = load(bytes, outline.kind);
    if (!image) return {};
    auto pixels = pixelsOf(*image);
    if (!pixels) return {};
    const CGSize size{pointsOf(image.get(), "x-dpi", pixels->width()),
                      pointsOf(image.get(), "y-dpi", pixels->height())};
    return {std::move(pixels), size};
}

}  // namespace zqcore::platform
