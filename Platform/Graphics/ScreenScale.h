#pragma once

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// Pixels a point on the main screen, which images without pixels of their own are drawn at; 1 until a
/// display tells another. What isn't above 0 is ignored. Any thread.
[[nodiscard]] ZQ_EXPORT double mainScreenScale() noexcept;
ZQ_EXPORT void setMainScreenScale(double scale) noexcept;

}  // namespace zqcore::platform
