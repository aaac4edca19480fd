#pragma once

#include <string>
#include <typeinfo>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// The name of a type as the source has it, namespaces included. Any thread.
[[nodiscard]] ZQ_EXPORT std::string NSStringFromClass(const std::type_info& type);

}  // namespace zqcore::platform
