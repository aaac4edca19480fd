#pragma once

#include <memory>
#include <string_view>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"

namespace zqcore {

namespace platform {
class NSFont;
}

// The room that a text takes, in points, rounded up to whole numbers. Lines end where the text says so and,
// at a width limit, between words. Threads: any. An empty text is 0 wide and one line high.

/// How high the text is, broken to the width; a width that isn't above 0 is no limit.
[[nodiscard]] ZQ_EXPORT platform::CGFloat zq_height(std::string_view text,
                                                    platform::CGFloat withConstrainedWidth,
                                                    const std::shared_ptr<platform::NSFont>& font);
/// How wide the text is when no line is broken.
[[nodiscard]] ZQ_EXPORT platform::CGFloat zq_width(std::string_view text,
                                                   platform::CGFloat withConstrainedHeight,
                                                   const std::shared_ptr<platform::NSFont>& font);

}  // namespace zqcore
