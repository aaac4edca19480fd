#pragma once

#include <span>
#include <string_view>

namespace gallery {

class Sheet;
class Stage;

/// One page: samples of one kind side by side, each with its name below. A new page is a source in
/// `Pages`, named here and in the list of `GalleryPage.cpp`.
struct GalleryPage {
    std::string_view name;  ///< for the command line and the names of pictures
    std::string_view title;
    std::string_view about;  ///< one line below the title
    /// Puts the samples on the sheet, their colours those of the current drawing appearance.
    void (*fill)(Sheet& sheet);
    /// What happens on the page before its picture is taken: the pointer rests, time passes.
    void (*play)(Stage& stage, Sheet& sheet) = nullptr;
};

extern const GalleryPage kTipsPage, kTipCardsPage, kLayersPage, kTextPage, kImagesPage, kLayoutPage,
    kControlsPage;

/// In the order of showing.
[[nodiscard]] std::span<const GalleryPage* const> allPages();
/// Null for an unknown name.
[[nodiscard]] const GalleryPage* pageNamed(std::string_view name);

}  // namespace gallery
