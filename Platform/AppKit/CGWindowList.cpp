#include "Platform/AppKit/CGWindowList.h"

#include <algorithm>
#include <cstddef>

#include "Platform/AppKit/Display.h"
#include "Platform/Graphics/CGImage.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/PixelBuffer.h"

namespace zqcore::platform {

namespace {

/// From screen space to the list's, and back: y is counted from the primary screen's other edge.
CGRect turned(const Display& display, const CGRect& rect) {
    const auto screens = display.screens();
    const CGFloat height = screens.empty() ? 0 : screens.front().frame.size.height;
    return {{rect.origin.x, height - CGRectGetMaxY(rect)}, rect.size};
}

}  // namespace

std::vector<CGWindowDescription> CGWindowListCopyWindowInfo(unsigned option, CGWindowID /*relativeTo*/) {
    const auto display = Display::current();
    std::vector<CGWindowDescription> list;
    for (auto& info : display->windowList((option & kCGWindowListOptionOnScreenOnly) != 0)) {
        list.push_back({info.number, std::move(info.ownerName), info.ownerProcess, std::move(info.name),
                        turned(*display, info.frame), info.level});
    }
    return list;
}

std::vector<CGWindowID> CGWindowListCreate(unsigned option, CGWindowID relativeTo) {
    std::vector<CGWindowID> numbers;
    for (const auto& window : CGWindowListCopyWindowInfo(option, relativeTo))
        numbers.push_back(window.number);
    return numbers;
}

std::vector<CGWindowDescription> CGWindowListCreateDescriptionFromArray(
    const std::vector<CGWindowID>& windows) {
    const auto all = CGWindowListCopyWindowInfo(kCGWindowListOptionAll, kCGNullWindowID);
    std::vector<CGWindowDescription> described;
    for (const CGWindowID number : windows) {
        const auto found = std::ranges::find(all, number, &CGWindowDescription::number);
        if (found != all.end()) described.push_back(*found);
    }
    return described;
}

std::shared_ptr<const CGImage> CGWindowListCreateImageFromArray(const CGRect& bounds,
                                                                const std::vector<CGWindowID>& windows,
                                                                unsigned /*option*/) {
    const auto display = Display::current();
    const CGRect area = CGRectStandardize(bounds);
    if (CGRectIsEmpty(area)) return nullptr;
    const auto picture = display->capture(turned(*display, area), windows);
    if (!picture) return nullptr;
    const auto pixels = PixelBuffer::make(picture->width, picture->height);
    if (!pixels) return nullptr;
    const auto width = static_cast<std::ptrdiff_t>(picture->width);
    for (int y = 0; y < picture->height; ++y)
        std::copy_n(picture->pixels.begin() + y * width, width, pixels->row(y));
    return CGImage::make(pixels);
}

}  // namespace zqcore::platform
