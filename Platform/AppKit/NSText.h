#pragma once

#include <string>
#include <utility>
#include <vector>

#include "Platform/AppKit/NSView.h"
#include "Platform/Graphics/CGRect.h"

namespace zqcore::platform {

/// A text with a selection, as an editor holds it; nothing of editing itself. Ranges count UTF-16 units and
/// are kept as given. Threads: main thread.
class ZQ_EXPORT NSText : public NSView {
  public:
    using NSView::NSView;

    [[nodiscard]] const std::string& string() const noexcept { return text_; }
    void setString(std::string text) {
        text_ = std::move(text);
        ranges_ = {NSRange{}};
        setNeedsDisplay(true);
    }
    [[nodiscard]] NSRange selectedRange() const { return ranges_.front(); }
    void setSelectedRange(NSRange range) { setSelectedRanges({range}); }
    /// At least one; none at all counts as the empty one at the start.
    [[nodiscard]] const std::vector<NSRange>& selectedRanges() const noexcept { return ranges_; }
    void setSelectedRanges(std::vector<NSRange> ranges) {
        ranges_ = std::move(ranges);
        if (ranges_.empty()) ranges_.push_back({});
        setNeedsDisplay(true);
    }

    [[nodiscard]] bool acceptsFirstResponder() const override { return true; }

  private:
    std::string text_;
    std::vector<NSRange> ranges_ = {NSRange{}};
};

/// A text view: what an application lets a user select in. Threads: main thread.
class ZQ_EXPORT NSTextView : public NSText {
  public:
    using NSText::NSText;

    [[nodiscard]] bool isFlipped() const override { return true; }
    void drawRect(const CGRect& dirtyRect) override;
};

}  // namespace zqcore::platform
