#pragma once

#include <memory>

#include "Platform/Base/NSObject.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/NSColor.h"

namespace zqcore::platform {

/// The shadow of a view: black at a third of alpha, without offset and blur when new. Lengths in points; the
/// Gaussian's sigma is half of the radius. Threads: the main one.
class NSShadow final : public NSObject {
  public:
    [[nodiscard]] static std::shared_ptr<NSShadow> make() { return makeObject<NSShadow>(); }

    [[nodiscard]] const std::shared_ptr<NSColor>& shadowColor() const noexcept { return color_; }
    void setShadowColor(std::shared_ptr<NSColor> color) { color_ = std::move(color); }
    [[nodiscard]] CGSize shadowOffset() const noexcept { return offset_; }
    void setShadowOffset(CGSize offset) noexcept { offset_ = offset; }
    [[nodiscard]] CGFloat shadowBlurRadius() const noexcept { return blurRadius_; }
    void setShadowBlurRadius(CGFloat radius) noexcept { blurRadius_ = radius; }

    /// As a context draws it, the colour resolved now; transparent without colour.
    [[nodiscard]] CGShadow cgShadow() const {
        return {color_ ? color_->cgColor() : CGColor::clear(), offset_, blurRadius_};
    }

  private:
    std::shared_ptr<NSColor> color_ = NSColor::colorWithWhite(0, 1.0 / 3);
    CGSize offset_{};
    CGFloat blurRadius_ = 0;
};

}  // namespace zqcore::platform
