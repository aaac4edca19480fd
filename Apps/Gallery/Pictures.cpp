#include "Apps/Gallery/Pictures.h"

#include <filesystem>

#include "Apps/Gallery/GalleryPage.h"
#include "Apps/Gallery/Sheet.h"
#include "Apps/Gallery/Stage.h"
#include "Platform/AppKit/NSPanel.h"
#include "Platform/Graphics/NSAppearance.h"

namespace gallery {

namespace {

// Room on all sides of the page, so that nothing on it has to give way to the screen's edges.
constexpr CGFloat kRoom = 240;

DisplayScreen screenAt(CGFloat scale) {
    const CGRect frame{{}, {Sheet::kSize.width + 2 * kRoom, Sheet::kSize.height + 2 * kRoom}};
    return {frame, frame, scale};
}

DisplayPicture pictureOf(const GalleryPage& page, testkit::HeadlessApplication& application) {
    std::shared_ptr<Sheet> sheet;
    application.application().effectiveAppearance()->performAsCurrentDrawingAppearance(
        [&] { sheet = Sheet::make(page); });
    // With a title, so that it can have the keys.
    const auto window = makeObject<NSWindow>(CGRect{{kRoom, kRoom}, Sheet::kSize}, NSWindowStyleMaskTitled);
    window->setContentView(sheet);
    window->makeKeyAndOrderFront();
    application.turn();
    Stage stage(application, *window);
    stage.pointAway();
    if (page.play) page.play(stage, *sheet);
    DisplayPicture picture = stage.picture();
    window->close();
    // What a page left behind is over before the next one.
    stage.pointAway();
    application.advance(2);
    return picture;
}

}  // namespace

std::string writePictures(std::span<const GalleryPage* const> pages, const std::string& folder,
                          const std::function<void(const std::string& path)>& wrote) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) return folder;
    testkit::HeadlessApplication application;
    for (const int scale : {1, 2}) {
        application.display().setScreens({screenAt(scale)});
        for (const bool dark : {false, true}) {
            application.display().setAppearance(dark ? DisplayAppearance::dark : DisplayAppearance::light);
            for (const GalleryPage* page : pages) {
                const auto path = (std::filesystem::path(folder) /
                                   (std::string(page->name) + (dark ? "-dark@" : "-light@") +
                                    std::to_string(scale) + "x.png"))
                                      .string();
                if (!HeadlessDisplay::writePNG(pictureOf(*page, application), path)) return path;
                wrote(path);
            }
        }
    }
    return {};
}

}  // namespace gallery
