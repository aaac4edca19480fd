#include "Platform/Graphics/CIFilter.h"

#include <algorithm>
#include <cmath>

#include "Platform/Graphics/CGImage.h"

namespace zqcore::platform {

std::shared_ptr<CIFilter> CIFilter::filterWithName(std::string_view name) {
    return name == "CIColorControls" ? makeObject<CIFilter>(name) : nullptr;
}

void CIFilter::setValueForKey(CGFloat value, std::string_view key) {
    if (key == "inputBrightness" && std::isfinite(value)) brightness_ = std::clamp(value, -1.0, 1.0);
}

std::shared_ptr<const CGImage> CIFilter::apply(std::shared_ptr<const CGImage> image) const {
    if (!image || brightness_ == 0) return image;
    auto pixels = image->pixels()->copy();
    if (!pixels) return image;
    for (int y = 0; y < pixels->height(); ++y) {
        std::uint32_t* row = pixels->row(y);
        for (int x = 0; x < pixels->width(); ++x) {
            const auto alpha = static_cast<int>(row[x] >> 24);
            // Channels are multiplied by alpha, so what is added is too.
            const auto added = static_cast<int>(std::lround(brightness_ * alpha));
            const auto shifted = [&](int shift) {
                const auto channel = static_cast<int>(row[x] >> shift & 0xff);
                return static_cast<std::uint32_t>(std::clamp(channel + added, 0, alpha)) << shift;
            };
            row[x] = static_cast<std::uint32_t>(alpha) << 24 | shifted(16) | shifted(8) | shifted(0);
        }
    }
    return CGImage::make(std::move(pixels));
}

}  // namespace zqcore::platform
