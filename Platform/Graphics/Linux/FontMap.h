#pragma once

#include <pango/pangocairo.h>

#include <memory>
#include <string>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"
#include "Platform/Base/Linux/ReleasedBy.h"

namespace zqcore::platform {

using PangoLayoutHandle = std::unique_ptr<PangoLayout, ReleasedBy<g_object_unref>>;

using FontDescription = std::unique_ptr<PangoFontDescription, ReleasedBy<pango_font_description_free>>;

/// The calling thread's context over the pinned fonts; null if there is no font at all.
[[nodiscard]] PangoContext* pinnedTextContext();
/// The same over all fonts of the system, the pinned families first. Made at first use, since it reads the
/// system's whole list of fonts.
[[nodiscard]] PangoContext* systemTextContext();

/// Looks for the pinned files below another folder than the root. For tests, before anything is set in type.
ZQ_EXPORT void usePinnedFontsBelow(std::string folder);

[[nodiscard]] FontDescription fontDescription(CGFloat size, CGFloat weight);

/// Ascender and the like for a size of 1.
struct FontRatios {
    double ascender;
    double descender;
    double leading;
};
[[nodiscard]] FontRatios fontRatios(CGFloat weight);

}  // namespace zqcore::platform
