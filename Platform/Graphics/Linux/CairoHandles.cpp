#include "Platform/Graphics/Linux/CairoHandles.h"

#include <utility>

namespace zqcore::platform {

CairoSurface surfaceOver(std::shared_ptr<const PixelBuffer> pixels) {
    static constexpr cairo_user_data_key_t key{};
    using Holder = std::shared_ptr<const PixelBuffer>;
    // cairo takes writable bytes also for what it only reads.
    auto* bytes = reinterpret_cast<unsigned char*>(const_cast<std::uint32_t*>(pixels->row(0)));
    CairoSurface surface(cairo_image_surface_create_for_data(bytes, CAIRO_FORMAT_ARGB32, pixels->width(),
                                                             pixels->height(),
                                                             static_cast<int>(pixels->bytesPerRow())));
    auto holder = std::make_unique<Holder>(std::move(pixels));
    const auto release = [](void* held) { delete static_cast<Holder*>(held); };
    if (cairo_surface_set_user_data(surface.get(), &key, holder.get(), release) == CAIRO_STATUS_SUCCESS) {
        static_cast<void>(holder.release());
    }
    return surface;
}

}  // namespace zqcore::platform
