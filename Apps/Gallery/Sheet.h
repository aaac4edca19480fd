#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "Platform/AppKit/NSTextField.h"
#include "Platform/AppKit/NSView.h"

namespace gallery {

using namespace zqcore;
using namespace zqcore::platform;

struct GalleryPage;

/// The ground of a page: its title, and rows of samples with a caption under each, from left to right and
/// from top to bottom. Units: points, y downwards. Threads: main thread.
class Sheet final : public NSView {
  public:
    static constexpr CGSize kSize{760, 520};

    /// The page, filled for the current drawing appearance.
    [[nodiscard]] static std::shared_ptr<Sheet> make(const GalleryPage& page);
    Sheet() : NSView(CGRect{{}, kSize}) {}

    /// The next sample of the row, at the size of its frame.
    void add(const std::shared_ptr<NSView>& sample, std::string_view caption);
    /// The same at a place of the sheet, without caption.
    void place(const std::shared_ptr<NSView>& sample, CGPoint origin);
    /// What follows stands below all that is there, under a heading if there is one.
    void beginRow(std::string_view heading = {});
    /// The space between the samples of a row.
    void setGap(CGFloat gap) { gap_ = gap; }
    /// What was added and placed, in that order.
    [[nodiscard]] const std::vector<std::shared_ptr<NSView>>& samples() const noexcept { return samples_; }

    [[nodiscard]] bool isFlipped() const override { return true; }
    void drawRect(const CGRect& dirtyRect) override;

  private:
    CGPoint next_{24, 70};
    CGFloat rowEnd_ = 70;
    CGFloat gap_ = 20;
    std::vector<std::shared_ptr<NSView>> samples_;
};

/// A line of text at its own size.
[[nodiscard]] std::shared_ptr<NSTextField> label(std::string_view text, CGFloat size = 13,
                                                 const std::shared_ptr<NSColor>& color = nullptr,
                                                 CGFloat weight = 0);

}  // namespace gallery
