#pragma once

#include <cairo.h>

#include "Platform/Graphics/CGContext.h"

namespace zqcore::platform {

/// Replaces cairo's path by this one, in the present space.
void addToCairo(cairo_t* cairo, const CGPath& path);

/// The shadow of the filled path, which may be left out within `covered`, and of all that a pattern shows in
/// the present space.
void drawPathShadow(cairo_t* cairo, const CGPath& path, const CGShadow& shadow, const CGRect& covered);
void drawPatternShadow(cairo_t* cairo, cairo_pattern_t* pattern, const CGShadow& shadow);

}  // namespace zqcore::platform
