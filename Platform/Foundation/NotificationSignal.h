#pragma once

#include <memory>
#include <string>

#include "Platform/Base/Export.h"
#include "Platform/Combine/RACSignal.h"
#include "Platform/Foundation/NSNotificationCenter.h"

namespace zqcore::platform {

/// The notifications of that name about `object` (null: about anyone), as they are posted, on the thread that
/// posts. It never completes and keeps no object. Lifetime: the center outlives the subscriptions.
[[nodiscard]] ZQ_EXPORT RACSignal<std::shared_ptr<const NSNotification>> rac_addObserverForName(
    NSNotificationCenter& center, std::string name, const std::shared_ptr<NSObject>& object);

}  // namespace zqcore::platform
