#include "Platform/AppKit/NSScreen.h"

#include "Platform/AppKit/Display.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSWindow.h"

namespace zqcore::platform {

NSScreen::NSScreen(CGRect frame, CGRect visibleFrame, CGFloat scale)
    : frame_(frame), visibleFrame_(visibleFrame), scale_(scale) {}

std::vector<std::shared_ptr<NSScreen>> NSScreen::screens() {
    std::vector<std::shared_ptr<NSScreen>> screens;
    for (const DisplayScreen& screen : Display::current()->screens())
        screens.push_back(makeObject<NSScreen>(screen.frame, screen.visibleFrame, screen.scale));
    return screens;
}

std::shared_ptr<NSScreen> NSScreen::mainScreen() {
    if (const auto window = NSApplication::shared()->keyWindow()) {
        if (auto screen = window->screen()) return screen;
    }
    const auto all = screens();
    return all.empty() ? nullptr : all.front();
}

CGRect NSScreen::convertRectToBacking(const CGRect& rect) const noexcept {
    return {{rect.origin.x * scale_, rect.origin.y * scale_},
            {rect.size.width * scale_, rect.size.height * scale_}};
}

}  // namespace zqcore::platform
