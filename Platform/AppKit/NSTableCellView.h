#pragma once

#include <any>
#include <memory>
#include <utility>

#include "Platform/AppKit/NSView.h"

namespace zqcore::platform {

class NSImageView;
class NSTextField;

/// What a cell of a table shows: views of its own, and the value it stands for. Threads: main thread.
/// Lifetime: the text field and the image view are subviews, known weakly.
class ZQ_EXPORT NSTableCellView : public NSView {
  public:
    using NSView::NSView;

    [[nodiscard]] const std::any& objectValue() const noexcept { return value_; }
    virtual void setObjectValue(std::any value) { value_ = std::move(value); }
    [[nodiscard]] std::shared_ptr<NSTextField> textField() const noexcept { return textField_.lock(); }
    void setTextField(const std::shared_ptr<NSTextField>& field) noexcept { textField_ = field; }
    [[nodiscard]] std::shared_ptr<NSImageView> imageView() const noexcept { return imageView_.lock(); }
    void setImageView(const std::shared_ptr<NSImageView>& view) noexcept { imageView_ = view; }

  private:
    std::any value_;
    std::weak_ptr<NSTextField> textField_;
    std::weak_ptr<NSImageView> imageView_;
};

}  // namespace zqcore::platform
