#pragma once

#include <string>
#include <string_view>

#include "Platform/Base/NSError.h"

namespace zqcore::platform {

// The error codes of scripting, as the platform numbers them.
inline constexpr long kErrorNotPermitted = -1743;
inline constexpr long kErrorTimedOut = -1712;
inline constexpr long kErrorNotHandled = -1708;
inline constexpr long kErrorNoSuchProcess = -600;
inline constexpr long kErrorConnectionInvalid = -609;
inline constexpr long kErrorBadParameter = -1715;

/// What a command answers that ended without a result. A caller of ours reads it as an absent result.
inline constexpr const char* kNoResultErrorName = "com.tessara.ZQCore.Scripting.Error.NoResult";

/// A scripting error in the domain of system status numbers.
[[nodiscard]] NSError makeScriptingError(long code, std::string text);

/// The scripting error for an error of the bus; its text keeps the bus's own name and message. Names are
/// those of the D-Bus specification (org.freedesktop.DBus.Error.*); one that isn't known counts as not
/// handled.
[[nodiscard]] NSError scriptingErrorForBusError(std::string_view name, std::string_view message);

/// The scripting error for a negative errno that sd-bus gave before anything was sent.
[[nodiscard]] NSError scriptingErrorForErrno(int negativeErrno, std::string_view what);

}  // namespace zqcore::platform
