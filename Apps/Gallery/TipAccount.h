#pragma once

namespace gallery {

/// Plays one tip on a headless display, from the pointer's coming to its going, and tells on standard output
/// what happened, where, and when by the clock. False if no tip came or it didn't go.
[[nodiscard]] bool tellTip();

}  // namespace gallery
