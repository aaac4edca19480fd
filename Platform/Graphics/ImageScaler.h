#pragma once

#include <memory>

#include "Platform/Base/Export.h"
#include "Platform/Graphics/PixelBuffer.h"

namespace zqcore::platform {

/// The picture in another number of pixels, by a windowed sinc of three lobes (Lanczos), widened where it
/// gets smaller; what sounds over is cut, so that channels stay below alpha. Any thread. Null for sides that
/// a bitmap can't have.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<PixelBuffer> scaledPixels(const PixelBuffer& source, int width,
                                                                  int height);

}  // namespace zqcore::platform
