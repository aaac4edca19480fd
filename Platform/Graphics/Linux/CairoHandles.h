#pragma once

#include <cairo.h>

#include <memory>

#include "Platform/Base/Linux/ReleasedBy.h"
#include "Platform/Graphics/PixelBuffer.h"

namespace zqcore::platform {

using CairoContext = std::unique_ptr<cairo_t, ReleasedBy<cairo_destroy>>;
using CairoSurface = std::unique_ptr<cairo_surface_t, ReleasedBy<cairo_surface_destroy>>;
using CairoPattern = std::unique_ptr<cairo_pattern_t, ReleasedBy<cairo_pattern_destroy>>;

/// A surface over the pixels, which it keeps as long as cairo keeps it.
[[nodiscard]] CairoSurface surfaceOver(std::shared_ptr<const PixelBuffer> pixels);

}  // namespace zqcore::platform
