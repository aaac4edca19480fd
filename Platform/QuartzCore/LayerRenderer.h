#pragma once

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Clock.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {

class CALayer;
class CGContext;

/// Draws a layer tree as it shows at one moment: shadow, background within the corner radius, contents,
/// sublayers, and the border on top, wholly inside the bounds. A subtree becomes a surface of its own only
/// where its opacity or its shadow asks for one.
/// Threads: main. Failure: layers without area, or flattened by their transform, draw nothing.
class ZQ_EXPORT LayerRenderer final {
  public:
    LayerRenderer() = delete;

    /// Draws `layer` into the present space of `context`, which is taken for its superlayer's; scale the
    /// context before for pixels. Draw handlers that are due run on the way.
    static void render(CALayer& layer, CGContext& context);
    static void render(CALayer& layer, CGContext& context, Clock::Instant now);
    /// Leaves out what surely lies outside of `part` of the superlayer's space, by the last `damage`, which
    /// is to be asked for the same moment.
    static void render(CALayer& layer, CGContext& context, Clock::Instant now, const CGRect& part);

    /// The part of the superlayer's space that shows something else than at the last call, as one rectangle;
    /// null if nothing does. What casts a shadow is in it wholly or not at all. `markRendered` is to follow.
    [[nodiscard]] static CGRect damage(CALayer& layer, Clock::Instant now);

  private:
    struct Walk;
    struct Damage;
};

}  // namespace zqcore::platform
