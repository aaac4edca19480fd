#pragma once

#include <functional>
#include <span>
#include <string>

namespace gallery {

struct GalleryPage;

/// Draws the pages on a headless display and writes PAGE-light@1x.png, PAGE-dark@1x.png and the same at @2x
/// into `folder`, which is made if need be. `wrote` hears of each file. The path that couldn't be written, or
/// empty.
[[nodiscard]] std::string writePictures(std::span<const GalleryPage* const> pages, const std::string& folder,
                                        const std::function<void(const std::string& path)>& wrote);

}  // namespace gallery
