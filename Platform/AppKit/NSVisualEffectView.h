#pragma once

#include <memory>

#include "Platform/AppKit/NSView.h"

namespace zqcore::platform {

class NSImage;

enum class NSVisualEffectMaterial { hudWindow = 13 };
enum class NSVisualEffectState { followsWindowActiveState = 0, active = 1, inactive = 2 };

/// A ground that lets what lies behind it shine through: one flat translucent colour, cut by the mask's
/// alpha; its subviews are not cut. Passes the mouse on. Threads: main thread.
class ZQ_EXPORT NSVisualEffectView : public NSView {
  public:
    using NSView::NSView;

    [[nodiscard]] NSVisualEffectMaterial material() const noexcept { return material_; }
    void setMaterial(NSVisualEffectMaterial material);
    [[nodiscard]] NSVisualEffectState state() const noexcept { return state_; }
    void setState(NSVisualEffectState state);
    [[nodiscard]] const std::shared_ptr<NSImage>& maskImage() const noexcept { return mask_; }
    void setMaskImage(std::shared_ptr<NSImage> image);

    void drawRect(const CGRect& dirtyRect) override;

  private:
    std::shared_ptr<NSImage> mask_;
    NSVisualEffectMaterial material_ = NSVisualEffectMaterial::hudWindow;
    NSVisualEffectState state_ = NSVisualEffectState::followsWindowActiveState;
};

}  // namespace zqcore::platform
