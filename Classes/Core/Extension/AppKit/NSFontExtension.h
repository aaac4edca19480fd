#pragma once

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"

namespace zqcore {

namespace platform {
class NSFont;
}

/// The height of a line in points: ascender, absolute descender and leading together, rounded up to a whole
/// number. Any thread.
[[nodiscard]] ZQ_EXPORT platform::CGFloat zq_lineHeight(const platform::NSFont& font) noexcept;

}  // namespace zqcore
