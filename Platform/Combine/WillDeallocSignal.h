#pragma once

#include <memory>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"
#include "Platform/Combine/RACSignal.h"

namespace zqcore::platform {

/// A signal that sends no value and completes when the object dies, before its teardown; who subscribes later
/// gets the completion at once. It keeps neither the object nor, once disposed, a subscriber. A null object
/// is one that is gone. Threads: any; the completion comes on the thread that drops the last reference.
[[nodiscard]] ZQ_EXPORT RACSignal<RACUnit> rac_willDeallocSignal(const std::shared_ptr<NSObject>& object);

}  // namespace zqcore::platform
