#include <cairo.h>
#include <png.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <memory>
#include <ranges>

#include "Platform/AppKit/Headless/HeadlessDisplay.h"
#include "Platform/AppKit/Headless/HeadlessWindow.h"
#include "Platform/Graphics/CGRect.h"

namespace zqcore::platform {

namespace {

struct Release {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t* context) const { cairo_destroy(context); }
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using Surface = std::unique_ptr<cairo_surface_t, Release>;
using Context = std::unique_ptr<cairo_t, Release>;

// The pixels stay the picture's; cairo reads or writes them in place.
Surface surfaceOver(std::uint32_t* pixels, int width, int height) {
    return Surface(cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(pixels),
                                                       CAIRO_FORMAT_ARGB32, width, height, width * 4));
}

DisplayPicture emptyPicture(CGSize size, CGFloat scale, std::uint32_t ground) {
    // More than any screen has is a mistake of the caller, not a wish for all memory.
    const auto side = [scale](CGFloat length) {
        return static_cast<int>(std::clamp(std::ceil(length * scale), 0.0, 32'767.0));
    };
    DisplayPicture picture{side(size.width), side(size.height), scale, {}};
    picture.pixels.assign(static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height),
                          ground);
    return picture;
}

constexpr std::uint32_t kDesktopGround = 0xFF5A6A7A;

}  // namespace

// `origin` is the lower left corner of the picture in screen space.
void HeadlessDisplay::compose(DisplayPicture& picture, CGPoint origin,
                              const std::vector<const Window*>& backToFront) const {
    if (picture.pixels.empty()) return;
    const Surface target = surfaceOver(picture.pixels.data(), picture.width, picture.height);
    const Context context(cairo_create(target.get()));
    const CGFloat height = picture.height / picture.scale;
    cairo_scale(context.get(), picture.scale, picture.scale);
    for (const Window* window : backToFront) {
        if (!window->state.sharesPixels) continue;
        const CGRect& frame = window->state.frame;
        const CGFloat x = frame.origin.x - origin.x;
        const CGFloat y = height - (CGRectGetMaxY(frame) - origin.y);
        if (window->foreign) {
            const std::uint32_t color = window->foreign->color;
            const auto channel = [color](int shift) { return ((color >> shift) & 0xFF) / 255.0; };
            const double alpha = std::max(channel(24), 1 / 255.0);
            cairo_set_source_rgba(context.get(), channel(16) / alpha, channel(8) / alpha, channel(0) / alpha,
                                  channel(24));
            cairo_rectangle(context.get(), x, y, frame.size.width, frame.size.height);
            cairo_fill(context.get());
        } else if (window->picture && !window->picture->pixels.empty()) {
            const DisplayPicture& shown = *window->picture;
            const Surface source =
                surfaceOver(const_cast<std::uint32_t*>(shown.pixels.data()), shown.width, shown.height);
            cairo_save(context.get());
            cairo_translate(context.get(), x, y);
            cairo_scale(context.get(), 1 / shown.scale, 1 / shown.scale);
            cairo_set_source_surface(context.get(), source.get(), 0, 0);
            if (shown.scale == picture.scale)
                cairo_pattern_set_filter(cairo_get_source(context.get()), CAIRO_FILTER_NEAREST);
            cairo_paint_with_alpha(context.get(), std::clamp(window->state.alpha, 0.0, 1.0));
            cairo_restore(context.get());
        }
    }
    cairo_surface_flush(target.get());
}

std::optional<DisplayPicture> HeadlessDisplay::screenshot(std::size_t screen) const {
    if (lost_ || screen >= screens_.size()) return std::nullopt;
    const DisplayScreen& shown = screens_[screen];
    DisplayPicture picture = emptyPicture(shown.frame.size, shown.scale, kDesktopGround);
    std::vector<const Window*> windows;
    for (const Window& window : stack_) {
        if (isShown(window)) windows.push_back(&window);
    }
    compose(picture, shown.frame.origin, windows);
    return picture;
}

std::optional<DisplayPicture> HeadlessDisplay::capture(
    const CGRect& rect, const std::vector<DisplayWindowNumber>& windows) const {
    if (lost_ || CGRectIsNull(rect)) return std::nullopt;
    const CGRect place = CGRectStandardize(rect);
    const auto onScreen = std::ranges::find_if(screens_, [&](const DisplayScreen& screen) {
        return CGRectContainsPoint(screen.frame, {CGRectGetMidX(place), CGRectGetMidY(place)});
    });
    const CGFloat scale = onScreen == screens_.end() ? screens_.front().scale : onScreen->scale;
    DisplayPicture picture = emptyPicture(place.size, scale, 0);
    std::vector<const Window*> chosen;
    for (const Window& window : stack_) {
        if (isShown(window) && std::ranges::find(windows, window.number) != windows.end())
            chosen.push_back(&window);
    }
    compose(picture, place.origin, chosen);
    return picture;
}

bool HeadlessDisplay::writePNG(const DisplayPicture& picture, const std::string& path) {
    const std::unique_ptr<std::FILE, Release> file(std::fopen(path.c_str(), "wbe"));
    if (!file || picture.width <= 0 || picture.height <= 0) return false;
    std::vector<std::uint8_t> straight;
    straight.reserve(picture.pixels.size() * 4);
    for (const std::uint32_t pixel : picture.pixels) {
        const std::uint32_t alpha = pixel >> 24;
        for (const int shift : {16, 8, 0}) {
            const std::uint32_t value = (pixel >> shift) & 0xFF;
            straight.push_back(static_cast<std::uint8_t>(
                alpha == 0 ? 0 : std::min(255U, (value * 255 + alpha / 2) / alpha)));
        }
        straight.push_back(static_cast<std::uint8_t>(alpha));
    }
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGBA;
    image.flags = PNG_IMAGE_FLAG_FAST;
    return png_image_write_to_stdio(&image, file.get(), 0, straight.data(), 0, nullptr) != 0;
}

}  // namespace zqcore::platform
