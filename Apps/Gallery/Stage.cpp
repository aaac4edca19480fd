#include "Apps/Gallery/Stage.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "Platform/Graphics/CGRect.h"

namespace gallery {

namespace {

// Premultiplied "over".
std::uint32_t over(std::uint32_t top, std::uint32_t ground) {
    const std::uint32_t through = 255 - (top >> 24);
    std::uint32_t result = 0;
    for (const int shift : {24, 16, 8, 0}) {
        const std::uint32_t below = (((ground >> shift) & 0xFF) * through + 127) / 255;
        result |= std::min<std::uint32_t>(((top >> shift) & 0xFF) + below, 255) << shift;
    }
    return result;
}

void draw(const DisplayPicture& top, DisplayPicture& ground) {
    if (top.pixels.size() != ground.pixels.size()) return;
    for (std::size_t i = 0; i < top.pixels.size(); ++i) {
        if (top.pixels[i] >> 24) ground.pixels[i] = over(top.pixels[i], ground.pixels[i]);
    }
}

}  // namespace

Stage::Stage(testkit::HeadlessApplication& application, NSWindow& window)
    : application_(application), window_(window) {
    kept_ = application_.display().capture(window_.frame(), {}).value_or(DisplayPicture{});
}

void Stage::pointTo(const NSView& view) {
    const CGRect place = window_.convertRectToScreen(view.convertRectToView(view.bounds(), nullptr));
    application_.display().movePointer({CGRectGetMidX(place), CGRectGetMidY(place)});
    application_.turn();
}

void Stage::pointAway() {
    application_.display().movePointer({2, 2});
    application_.turn();
}

DisplayPicture Stage::pageNow() {
    application_.turn();
    return application_.display()
        .capture(window_.frame(), {window_.windowNumber()})
        .value_or(DisplayPicture{});
}

void Stage::keep(const NSView& view) {
    const DisplayPicture now = pageNow();
    const CGRect place = view.convertRectToView(view.bounds(), nullptr);
    const auto pixel = [&](CGFloat length, int most) {
        return std::clamp(static_cast<int>(std::lround(length * now.scale)), 0, most);
    };
    const int left = pixel(CGRectGetMinX(place), now.width);
    const int right = pixel(CGRectGetMaxX(place), now.width);
    const int bottom = now.height - pixel(CGRectGetMinY(place), now.height);
    for (int y = now.height - pixel(CGRectGetMaxY(place), now.height); y < bottom; ++y) {
        const auto row = static_cast<std::size_t>(y) * static_cast<std::size_t>(now.width);
        std::copy(now.pixels.begin() + static_cast<std::ptrdiff_t>(row) + left,
                  now.pixels.begin() + static_cast<std::ptrdiff_t>(row) + right,
                  kept_.pixels.begin() + static_cast<std::ptrdiff_t>(row) + left);
    }
}

void Stage::keepWindows() {
    application_.turn();
    std::vector<DisplayWindowNumber> others;
    for (const auto& window : application_.application().windows()) {
        if (window.get() != &window_) others.push_back(window->windowNumber());
    }
    if (const auto shown = application_.display().capture(window_.frame(), others)) draw(*shown, kept_);
}

DisplayPicture Stage::picture() {
    DisplayPicture result = pageNow();
    draw(kept_, result);
    return result;
}

}  // namespace gallery
