#pragma once

#include <memory>

#include "Platform/AppKit/NSButton.h"
#include "Platform/AppKit/NSControl.h"

namespace zqcore::platform {

/// Shows an image. Its own size is the image's, none without. Passes the mouse on. Threads: main thread.
class ZQ_EXPORT NSImageView : public NSControl {
  public:
    using NSControl::NSControl;

    [[nodiscard]] const std::shared_ptr<NSImage>& image() const noexcept { return image_; }
    void setImage(std::shared_ptr<NSImage> image);
    [[nodiscard]] NSImageScaling imageScaling() const noexcept { return scaling_; }
    void setImageScaling(NSImageScaling scaling);
    /// For template images; null means the label colour.
    [[nodiscard]] const std::shared_ptr<NSColor>& contentTintColor() const noexcept { return tint_; }
    void setContentTintColor(std::shared_ptr<NSColor> color);

    [[nodiscard]] CGSize intrinsicContentSize() const override;
    [[nodiscard]] bool acceptsFirstResponder() const override { return false; }
    void drawRect(const CGRect& dirtyRect) override;

  private:
    std::shared_ptr<NSImage> image_;
    std::shared_ptr<NSColor> tint_;
    NSImageScaling scaling_ = NSImageScaling::proportionallyDown;
};

}  // namespace zqcore::platform
