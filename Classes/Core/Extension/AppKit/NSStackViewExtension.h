#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "Platform/Base/Export.h"

namespace zqcore::platform {
class NSStackView;
class NSView;
}  // namespace zqcore::platform

namespace zqcore {

// Operations on stacks. Threads: main thread. Failure: none.

/// Each arranged view leaves the stack, and its superview.
ZQ_EXPORT void removeAllArrangedSubviews(NSStackView& stack);

/// Hides the views at once; animated, the stack's window closes the gaps in 0.25 seconds. The completion
/// comes at the end, without animation inside the call.
ZQ_EXPORT void zq_hideViews(NSStackView& stack, const std::vector<std::shared_ptr<NSView>>& views,
                            bool animated, std::function<void()> completion = {});
/// Shows the views; animated, the stack's window makes room in 0.25 seconds, and then they appear.
ZQ_EXPORT void zq_showViews(NSStackView& stack, const std::vector<std::shared_ptr<NSView>>& views,
                            bool animated, std::function<void()> completion = {});

}  // namespace zqcore
