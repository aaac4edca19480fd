#include "Platform/AppKit/DefaultDisplay.h"

#include <cstdlib>
#include <string>

#include "Platform/AppKit/Headless/HeadlessDisplay.h"
#include "Platform/AppKit/X11/X11Display.h"
#include "Platform/Base/NSLog.h"

namespace zqcore::platform {

std::shared_ptr<Display> openDefaultDisplay() {
    if (const char* name = std::getenv("DISPLAY"); name && *name) {
        std::string reason;
        if (auto display = X11Display::open(name, &reason)) return display;
        NSLog("No windows on the display " + std::string(name) + ": " + reason);
    }
    return std::make_shared<HeadlessDisplay>();
}

}  // namespace zqcore::platform
