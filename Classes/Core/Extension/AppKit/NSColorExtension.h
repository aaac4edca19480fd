#pragma once

#include <memory>
#include <string_view>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"

namespace zqcore {

namespace platform {
class NSColor;
}

// Colours from text and by chance. Threads: any. Failure: none; a text of the wrong form gives white.

/// The colour that "#007AFF" or "007AFF" names, opaque. White unless the text has 7 characters and begins
/// with "#", or has 6; of those, digits count up to the first that is none, so that "#GGGGGG" gives black.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<platform::NSColor> hexColor(std::string_view text);
/// The same with an alpha from 0 to 1.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<platform::NSColor> hexColor(std::string_view text,
                                                                    platform::CGFloat alpha);

/// A light colour: each channel one of 0.60, 0.61 up to 0.99, opaque.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<platform::NSColor> random();

}  // namespace zqcore
