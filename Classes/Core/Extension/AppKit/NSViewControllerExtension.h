#pragma once

#include <functional>
#include <memory>

#include "Platform/Base/Export.h"

namespace zqcore::platform {
class NSViewController;
}  // namespace zqcore::platform

namespace zqcore {

/// Adds `child` with its view in front of the parent's others. `updateFrame` places the view; without it the
/// view fills the parent's. Threads: main thread. Failure: a null child adds nothing.
ZQ_EXPORT void zq_addChild(NSViewController& parent, const std::shared_ptr<NSViewController>& child,
                           const std::function<void()>& updateFrame = {});
/// Takes the child's view out of its superview, and the child out of its parent.
ZQ_EXPORT void zq_removeChild(NSViewController& parent, const std::shared_ptr<NSViewController>& child);

}  // namespace zqcore
