#pragma once

#include <cairo.h>

#include <memory>

#include "Platform/Graphics/PixelBuffer.h"

namespace zqcore::platform {

template <auto Release>
struct CairoRelease {
    template <class T>
    void operator()(T* object) const noexcept {
        Release(object);
    }
};

using CairoContext = std::unique_ptr<cairo_t, CairoRelease<cairo_destroy>>;
using CairoSurface = std::unique_ptr<cairo_surface_t, CairoRelease<cairo_surface_destroy>>;
using CairoPattern = std::unique_ptr<cairo_pattern_t, CairoRelease<cairo_pattern_destroy>>;

/// A surface over the pixels, which it keeps as long as cairo keeps it.
[[nodiscard]] CairoSurface surfaceOver(std::shared_ptr<const PixelBuffer> pixels);

}  // namespace zqcore::platform
