#pragma once

#include <functional>
#include <memory>

#include "Platform/Base/CGGeometry.h"

struct _cairo_surface;

// Private to the layers.
namespace zqcore::platform {

class CGContext;

/// What a draw handler drew, kept as operations and not as pixels: it stays sharp at any scale and place.
/// Threads: main. Failure: bounds without area record nothing, and the handler isn't called.
class LayerRecording final {
  public:
    /// Calls `draw` in the space of `bounds`, on a context that tells `scale` pixels a point, by which images
    /// choose their form.
    LayerRecording(const CGRect& bounds, bool flipped, CGFloat scale,
                   const std::function<void(CGContext&)>& draw);
    ~LayerRecording();
    LayerRecording(const LayerRecording&) = delete;
    LayerRecording& operator=(const LayerRecording&) = delete;

    /// Draws it over `rect` of the present space, stretched where the size differs.
    void replay(CGContext& context, const CGRect& rect) const;

  private:
    CGSize size_;  // in pixels
    _cairo_surface* surface_ = nullptr;
};

}  // namespace zqcore::platform
