#pragma once

#include "Platform/Scripting/BusDirectory.h"

namespace zq {

/// Whether there is a session bus. Without one nobody can be asked and no broadcast is heard, which the
/// library's statuses don't tell apart from an application that isn't installed.
[[nodiscard]] inline bool busIsThere() { return zqcore::nameHasOwner("org.freedesktop.DBus"); }

}  // namespace zq
