#include "Platform/AppKit/DefaultDisplay.h"

#include <cstdlib>
#include <string>

#include "Platform/AppKit/Headless/HeadlessDisplay.h"
#include "Platform/AppKit/X11/X11Display.h"
#include "Platform/Base/NSLog.h"

namespace zqcore::platform {

std::shared_ptr<Display> openDefaultDisplay() {
    const char* const name = std::getenv("DISPLAY");
    std::string reason = "DISPLAY isn't set";
    if (name && *name) {
        if (auto display = X11Display::open(name, &reason)) return display;
        reason = std::string(name) + ": " + reason;
    }
    NSLog("No windows can be shown, " + reason);
    return std::make_shared<HeadlessDisplay>();
}

}  // namespace zqcore::platform
