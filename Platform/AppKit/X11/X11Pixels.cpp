#include "Platform/AppKit/X11/X11Pixels.h"

#include <algorithm>
#include <cstddef>

namespace zqcore::platform {

namespace {

constexpr std::uint32_t kOpaque = 0xFF000000;
constexpr std::uint32_t kHalf = 128;

// A soft edge that was multiplied by its alpha would look like a dark rim.
std::uint32_t straight(std::uint32_t pixel) {
    const std::uint32_t alpha = pixel >> 24;
    if (alpha == 0xFF) return pixel;
    if (alpha < kHalf) return pixel | kOpaque;
    std::uint32_t out = kOpaque;
    for (const int shift : {16, 8, 0}) {
        const std::uint32_t value = (pixel >> shift) & 0xFF;
        out |= std::min(255U, (value * 255 + alpha / 2) / alpha) << shift;
    }
    return out;
}

}  // namespace

void appendX11Row(std::vector<std::uint32_t>& out, std::span<const std::uint32_t> row, X11Alpha alpha) {
    switch (alpha) {
        case X11Alpha::blended:
            out.insert(out.end(), row.begin(), row.end());
            break;
        case X11Alpha::opaque:
            for (const std::uint32_t pixel : row) out.push_back(pixel | kOpaque);
            break;
        case X11Alpha::cut:
            for (const std::uint32_t pixel : row) out.push_back(straight(pixel));
            break;
    }
}

std::vector<xcb_rectangle_t> x11ShapeOf(const DisplaySurface& surface, int width, int height) {
    std::vector<xcb_rectangle_t> rectangles;
    std::size_t bandStart = 0;  // where the runs of the rows above begin
    const int columns = std::min(surface.width, width);
    const int rows = std::min(surface.height, height);
    for (int y = 0; y < rows; ++y) {
        const auto* row = surface.pixels + static_cast<std::size_t>(y) * (surface.bytesPerRow / 4);
        const std::size_t rowStart = rectangles.size();
        for (int x = 0; x < columns;) {
            if (row[x] >> 24 < kHalf) {
                ++x;
                continue;
            }
            const int first = x;
            while (x < columns && row[x] >> 24 >= kHalf) ++x;
            rectangles.push_back({static_cast<std::int16_t>(first), static_cast<std::int16_t>(y),
                                  static_cast<std::uint16_t>(x - first), 1});
        }
        // A row with the runs of the band above only makes that band higher.
        const auto band = std::span(rectangles).subspan(bandStart, rowStart - bandStart);
        const auto runs = std::span(rectangles).subspan(rowStart);
        const bool same = !runs.empty() && std::ranges::equal(band, runs, [&](const auto& a, const auto& b) {
            return a.x == b.x && a.width == b.width && a.y + a.height == y;
        });
        if (same) {
            for (auto& one : band) ++one.height;
            rectangles.resize(rowStart);
        } else {
            bandStart = rowStart;
        }
    }
    return rectangles;
}

}  // namespace zqcore::platform
