#include "Platform/AppKit/Display.h"

#include <utility>

#include "Platform/AppKit/Headless/HeadlessDisplay.h"
#include "Platform/Base/NSLog.h"

namespace zqcore::platform {

namespace {

struct Installed {
    std::shared_ptr<Display> display;
    std::function<std::shared_ptr<Display>()> maker;
};

Installed& installed() {
    // Never ended: a window may still ask while the process goes.
    static Installed& state = *new Installed;
    return state;
}

}  // namespace

std::shared_ptr<Display> Display::current() {
    Installed& state = installed();
    if (!state.display && state.maker) state.display = state.maker();
    if (!state.display) {
        NSLog("No display was chosen: windows are kept in memory and shown to nobody");
        state.display = std::make_shared<HeadlessDisplay>();
    }
    return state.display;
}

void Display::install(std::shared_ptr<Display> display) { installed().display = std::move(display); }

void Display::setDefaultMaker(std::function<std::shared_ptr<Display>()> maker) {
    installed().maker = std::move(maker);
}

}  // namespace zqcore::platform
