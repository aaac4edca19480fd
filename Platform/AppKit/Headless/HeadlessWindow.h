#pragma once

#include "Platform/AppKit/Headless/HeadlessDisplay.h"

namespace zqcore::platform {

/// One window of the stack, ours or a foreign one.
struct HeadlessDisplay::Window {
    DisplayWindowNumber number = 0;
    DisplayWindowState state;
    std::optional<ForeignWindow> foreign;
    std::optional<DisplayPicture> picture;
    std::optional<DisplaySurface::Part> changed;
    int presents = 0;
    int space = 0;
    bool shown = false;
};

}  // namespace zqcore::platform
