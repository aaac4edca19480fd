#pragma once

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// Whether this process is trusted with accessibility: only then do global event monitors get the keys that
/// are typed into other applications. The desktops that we run on ask nobody for leave, so the answer is yes
/// until it is set otherwise, by an application with a consent of its own or by a test. Any thread.
[[nodiscard]] ZQ_EXPORT bool AXIsProcessTrusted() noexcept;
ZQ_EXPORT void setProcessTrusted(bool trusted) noexcept;

}  // namespace zqcore::platform
