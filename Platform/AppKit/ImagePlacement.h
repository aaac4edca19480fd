#pragma once

#include <algorithm>

#include "Platform/AppKit/NSButton.h"
#include "Platform/Base/CGGeometry.h"

namespace zqcore::platform {

/// Where a picture of `size` goes in `area`: scaled as told, in the middle.
[[nodiscard]] inline CGRect placedImage(const CGRect& area, CGSize size, NSImageScaling scaling) {
    if (size.width > 0 && size.height > 0 && scaling != NSImageScaling::none) {
        if (scaling == NSImageScaling::axesIndependently) return area;
        CGFloat factor = std::min(area.size.width / size.width, area.size.height / size.height);
        if (scaling == NSImageScaling::proportionallyDown) factor = std::min(factor, 1.0);
        size = {size.width * factor, size.height * factor};
    }
    return {{area.origin.x + (area.size.width - size.width) / 2,
             area.origin.y + (area.size.height - size.height) / 2},
            size};
}

}  // namespace zqcore::platform
