#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Platform/Base/Export.h"
#include "Platform/Scripting/NSAppleEventDescriptor.h"

namespace zqcore {

/// The event that calls the handler `functionName` of a script, addressed to this process: class 'ascr', ID
/// 'psbr', the name under 'snam' and the parameters, in their order, as a list in the direct parameter.
/// Without parameters there is no direct parameter. Any thread.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<NSAppleEventDescriptor> zq_eventDescriptior(
    std::string functionName, std::vector<std::shared_ptr<NSAppleEventDescriptor>> parameters = {});

}  // namespace zqcore
