#pragma once

#include <memory>

#include "Platform/Base/CGGeometry.h"

// Private to the layers.
namespace zqcore::platform {

class CGPath;

/// The part of a path between two fractions of its length, 0 <= `start` < `end` <= 1; curves stay curves.
/// Lengths of curves are summed over short lines, true to about a thousandth.
[[nodiscard]] std::shared_ptr<CGPath> partOfPath(const CGPath& path, CGFloat start, CGFloat end);

}  // namespace zqcore::platform
