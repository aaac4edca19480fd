#pragma once

#include <optional>

#include "Platform/Base/Export.h"

// Between the platform's key codes and the kernel's (linux/input-event-codes.h). An X key code is the
// kernel's plus 8. Threads: any. Failure: absent for a key that the other side doesn't have.
namespace zqcore::platform {

[[nodiscard]] ZQ_EXPORT std::optional<int> evdevCodeForKeyCode(int keyCode) noexcept;
[[nodiscard]] ZQ_EXPORT std::optional<int> keyCodeForEvdevCode(int evdevCode) noexcept;

}  // namespace zqcore::platform
