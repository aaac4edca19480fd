#include "Apps/Gallery/GalleryPage.h"

#include <algorithm>

namespace gallery {

namespace {

constexpr const GalleryPage* kPages[] = {&kTipsPage,   &kTipCardsPage, &kLayersPage,  &kTextPage,
                                         &kImagesPage, &kLayoutPage,   &kControlsPage};

}  // namespace

std::span<const GalleryPage* const> allPages() { return kPages; }

const GalleryPage* pageNamed(std::string_view name) {
    const auto found = std::ranges::find(kPages, name, &GalleryPage::name);
    return found == std::end(kPages) ? nullptr : *found;
}

}  // namespace gallery
