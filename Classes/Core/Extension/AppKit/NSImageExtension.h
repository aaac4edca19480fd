#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <source_location>
#include <string>
#include <string_view>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Data.h"
#include "Platform/Base/Export.h"

namespace zqcore {

namespace platform {
class CGContext;
class CGImage;
class NSColor;
class NSImage;
}  // namespace platform

// Making, converting, writing, tinting and resizing images. Sizes are in points where they aren't called
// pixels. Threads: one at a time for each image; `zq_image` with a function and `zq_tint` change the calling
// thread's current graphics context while they run. Failure: a null pointer, no bytes, "" or false.

/// An image with the one bitmap; null for null.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<platform::NSImage> zq_image(
    const std::shared_ptr<const platform::CGImage>& withCGImage);

using DrawFunction = std::function<void(platform::CGContext&)>;
/// An image drawn by the function into a bitmap of one pixel a point, the size cut to whole numbers. The
/// bitmap is transparent at first, and its context the thread's current one. A size without a pixel gives an
/// image without forms, and the function isn't called.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<platform::NSImage> zq_image(platform::CGSize withSize,
                                                                    const DrawFunction& graphicsContext);
/// From a file's bytes in base64, unknown characters passed over.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<platform::NSImage> zq_image(std::string_view withBase64String);

/// The image's pixels: of a bitmap all it has, of a drawn image as many as the main screen would show.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<const platform::CGImage> zq_cgImage(const platform::NSImage& image);
/// In pixels; 0 by 0 without.
[[nodiscard]] ZQ_EXPORT platform::CGSize zq_pixelSize(const platform::NSImage& image);

[[nodiscard]] ZQ_EXPORT std::optional<platform::Data> zq_PNGData(const platform::NSImage& image);
/// At the best quality; white under what is transparent.
[[nodiscard]] ZQ_EXPORT std::optional<platform::Data> zq_JPEGData(const platform::NSImage& image);
/// The PNG file in base64 without line breaks, "" if there is none.
[[nodiscard]] ZQ_EXPORT std::string zq_base64String(const platform::NSImage& image);

/// Writes the file in one step, its folders made before. False for an empty path, a bare name, an image
/// without bytes and any failure; what the file system refused also gives one line at error level.
ZQ_EXPORT bool zq_writeToFileAsPNG(const platform::NSImage& image, std::string_view path,
                                   const std::source_location& where = std::source_location::current());
ZQ_EXPORT bool zq_writeToFileAsJPEG(const platform::NSImage& image, std::string_view path,
                                    const std::source_location& where = std::source_location::current());

/// A copy painted over with the colour where it is opaque. It has as many pixels as the main screen would
/// show.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<platform::NSImage> zq_tint(const platform::NSImage& image,
                                                                   const platform::NSColor& color);

/// The image stretched to a size, one pixel a point, cut to whole pixels. Null without pixels, for a side
/// below one pixel, and for a size wider than the source: the rows stay as long as they were.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<platform::NSImage> zq_resizeImage(const platform::NSImage& image,
                                                                          platform::CGSize size);

/// A box to fit into, so named to tell the two ways of resizing apart: `zq_resizeImage(image, BoxSize{80,
/// 60})`.
struct BoxSize {
    platform::CGFloat width = 0;
    platform::CGFloat height = 0;
};
/// The same into the largest size of the image's own shape that the box holds. Null also for a box or an
/// image with a side of 0 or less.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<platform::NSImage> zq_resizeImage(const platform::NSImage& image,
                                                                          BoxSize boxSize);

}  // namespace zqcore
