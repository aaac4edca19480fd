#pragma once

#include "Platform/Base/Export.h"

namespace zqcore::platform {

// Asking the user for leave, and what has been answered. As `AXIsProcessTrusted`: nobody has to be asked
// here, so the answer is yes until it is set otherwise. Any thread.

/// Whether this process may see what other applications show.
[[nodiscard]] ZQ_EXPORT bool CGPreflightScreenCaptureAccess() noexcept;
/// The same, and asks the user where the answer is no.
ZQ_EXPORT bool CGRequestScreenCaptureAccess() noexcept;
/// `AXIsProcessTrusted`; with `prompt`, the option "kAXTrustedCheckOptionPrompt", asks where the answer is
/// no.
ZQ_EXPORT bool AXIsProcessTrustedWithOptions(bool prompt) noexcept;

ZQ_EXPORT void setScreenCaptureAccess(bool granted) noexcept;
/// How often the user would have been asked, for either.
[[nodiscard]] ZQ_EXPORT int permissionPromptsForTesting() noexcept;

}  // namespace zqcore::platform
