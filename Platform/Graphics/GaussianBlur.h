#pragma once

#include <cstddef>
#include <cstdint>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// Blurs a plane of bytes in place by a Gaussian of `sigma` pixels; beyond the edges lies 0. Up to 2 pixels
/// the Gaussian itself, above three running means, which stay within 3 % of it and cost the same for any
/// sigma. Any thread. A sigma of 0 or less, or one that is no number, leaves the plane alone.
ZQ_EXPORT void gaussianBlur(std::uint8_t* bytes, int width, int height, std::size_t bytesPerRow,
                            double sigma);

/// How many pixels outside its shape a blur of that sigma shows.
[[nodiscard]] ZQ_EXPORT int gaussianReach(double sigma) noexcept;

}  // namespace zqcore::platform
