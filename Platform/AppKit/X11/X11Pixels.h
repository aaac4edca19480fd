#pragma once

#include <xcb/xproto.h>

#include <cstdint>
#include <span>
#include <vector>

#include "Platform/AppKit/Display.h"

// What becomes of presented pixels on a server. Threads: any; nothing fails.
namespace zqcore::platform {

enum class X11Alpha {
    blended,  ///< as they are, for a compositing manager
    opaque,   ///< without holes, whatever was presented
    cut,      ///< nothing blends: the colour itself inside the shape
};

/// Appends a row of premultiplied pixels as the server gets them.
void appendX11Row(std::vector<std::uint32_t>& out, std::span<const std::uint32_t> row, X11Alpha alpha);

/// The part of a surface, no larger than given, that is at least half opaque: rectangles in bands from the
/// top, left to right in each, as the SHAPE extension takes them.
[[nodiscard]] std::vector<xcb_rectangle_t> x11ShapeOf(const DisplaySurface& surface, int width, int height);

}  // namespace zqcore::platform
