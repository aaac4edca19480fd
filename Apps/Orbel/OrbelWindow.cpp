#include "Apps/Orbel/OrbelWindow.h"

#include <memory>
#include <utility>

#include "Classes/Log/Log/ZQLog.h"
#include "Platform/AppKit/DefaultDisplay.h"
#include "Platform/AppKit/Headless/HeadlessDisplay.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSTextField.h"
#include "Platform/AppKit/NSWindow.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Layout/ConstraintMaker.h"

namespace demo {

using namespace zqcore;

namespace {

/// The window with its one label; it lives on when it is closed.
struct MainWindow {
    std::shared_ptr<NSWindow> window = makeObject<NSWindow>(
        CGRect{{160, 160}, {420, 160}}, NSWindowStyleMaskTitled | NSWindowStyleMaskClosable);
    std::shared_ptr<NSTextField> label = NSTextField::labelWithString("");

    MainWindow() {
        window->setTitle("Orbel");
        window->setBackgroundColor(NSColor::windowBackgroundColor());
        window->setReleasedWhenClosed(false);
        window->contentView()->addSubview(label);
        snp(label).makeConstraints([](ConstraintMaker& make) { make.center().equalToSuperview(); });
    }
};

/// Asked once, at the first window: a server without one must not touch the display.
bool hasDisplay() {
    static const bool has = [] {
        auto display = openDefaultDisplay();
        if (std::dynamic_pointer_cast<HeadlessDisplay>(display)) return false;
        Display::install(std::move(display));
        return true;
    }();
    return has;
}

}  // namespace

void showMainWindow(std::string line) {
    DispatchQueue::main()->async([line = std::move(line)] {
        if (!hasDisplay()) {
            ZQLogInfo([&] { return "no display to show the window on"; });
            return;
        }
        static const MainWindow main;
        main.label->setStringValue(line);
        main.window->makeKeyAndOrderFront();
        NSApplication::shared()->activate();
    });
}

}  // namespace demo
