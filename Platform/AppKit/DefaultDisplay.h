#pragma once

#include <memory>

#include "Platform/AppKit/Display.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// The desktop's display: the X server that DISPLAY names, if it can be reached, else a headless one; why it
/// isn't the server is reported. Fits `Display::setDefaultMaker`. Never null. Main thread.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<Display> openDefaultDisplay();

}  // namespace zqcore::platform
