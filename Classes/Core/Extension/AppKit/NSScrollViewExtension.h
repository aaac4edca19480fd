#pragma once

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {
class NSScrollView;
}  // namespace zqcore::platform

namespace zqcore {

// Operations on scroll views. Units: points, seconds. Threads: main thread. Failure: none.

/// Where the visible part begins in the document.
[[nodiscard]] ZQ_EXPORT CGPoint zq_contentOffset(const NSScrollView& view);
ZQ_EXPORT void zq_setContentOffset(NSScrollView& view, CGPoint offset);
/// The document's size; zero without one.
[[nodiscard]] ZQ_EXPORT CGSize zq_contentSize(const NSScrollView& view);
/// Scrolls there, in a duration above 0 step by step, else at once.
ZQ_EXPORT void zq_scrollToPoint(NSScrollView& view, CGPoint point, double animateDuration);

}  // namespace zqcore
