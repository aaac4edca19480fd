#pragma once

#include <cairo.h>

#include <cmath>
#include <memory>
#include <optional>
#include <vector>

#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGImage.h"
#include "Platform/Graphics/Linux/CairoHandles.h"

// What the parts of CGContext share.
namespace zqcore::platform {

struct ContextState {
    bool flipped = false;
    /// The transform has no way back: cairo would refuse it for good, so it isn't told.
    bool flat = false;
    CGColor fill{0, 0, 0, 1};
    CGColor stroke{0, 0, 0, 1};
    CGFloat alpha = 1;
    CGInterpolationQuality quality = CGInterpolationQuality::standard;
};

/// A transparency layer that is being drawn.
struct ContextGroup {
    CGFloat alpha;
    std::optional<CGShadow> shadow;
    std::size_t states;  ///< how many states were saved before it
};

[[nodiscard]] inline bool isFinite(const CGRect& rect) {
    return std::isfinite(rect.origin.x) && std::isfinite(rect.origin.y) && std::isfinite(rect.size.width) &&
           std::isfinite(rect.size.height);
}

struct CGContext::Impl {
    CairoContext cairo;
    std::shared_ptr<PixelBuffer> pixels;
    CGFloat pixelHeight = 0;
    ContextState state;
    std::vector<ContextState> saved;
    std::vector<ContextGroup> groups;

    void setSource(const CGColor& color) const {
        cairo_set_source_rgba(cairo.get(), color.red, color.green, color.blue, color.alpha * state.alpha);
    }
    void addRect(const CGRect& rect) const {
        cairo_new_path(cairo.get());
        cairo_rectangle(cairo.get(), rect.origin.x, rect.origin.y, rect.size.width, rect.size.height);
    }
    [[nodiscard]] std::shared_ptr<const CGImage> scaledToPlace(const CGImage& image,
                                                               const CGRect& rect) const;
    void endGroup(const CGImage* mask, const CGRect& rect);
};

}  // namespace zqcore::platform
