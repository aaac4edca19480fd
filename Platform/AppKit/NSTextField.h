#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "Platform/AppKit/NSControl.h"
#include "Platform/AppKit/NSText.h"
#include "Platform/Graphics/TextLayout.h"

namespace zqcore::platform {

class NSAttributedString;
class NSColor;

/// A text: a label by its maker, else a field that wraps by words and may be edited. Labels pass the mouse
/// on. Units: points; its own size is the text's, width rounded up, by lines of the font's line height.
/// Threads: main thread. Lifetime: as every view.
class ZQ_EXPORT NSTextField : public NSControl {
  public:
    using NSControl::NSControl;

    /// Not editable, not selectable, without bezel and background, one line, cut off at its end.
    [[nodiscard]] static std::shared_ptr<NSTextField> labelWithString(std::string_view text);

    [[nodiscard]] const std::string& stringValue() const noexcept { return text_; }
    virtual void setStringValue(std::string text);
    /// The text with attributes; null follows the plain one.
    [[nodiscard]] const std::shared_ptr<NSAttributedString>& attributedStringValue() const noexcept {
        return attributed_;
    }
    void setAttributedStringValue(std::shared_ptr<NSAttributedString> text);
    /// The label colour at first.
    [[nodiscard]] const std::shared_ptr<NSColor>& textColor() const noexcept { return textColor_; }
    void setTextColor(std::shared_ptr<NSColor> color);
    [[nodiscard]] const std::shared_ptr<NSColor>& backgroundColor() const noexcept { return background_; }
    void setBackgroundColor(std::shared_ptr<NSColor> color);
    [[nodiscard]] bool drawsBackground() const noexcept { return drawsBackground_; }
    void setDrawsBackground(bool draws);
    [[nodiscard]] bool isBezeled() const noexcept { return bezeled_; }
    void setBezeled(bool bezeled);
    [[nodiscard]] bool isBordered() const noexcept { return bordered_; }
    void setBordered(bool bordered);
    [[nodiscard]] bool isEditable() const noexcept { return editable_; }
    void setEditable(bool editable);
    [[nodiscard]] bool isSelectable() const noexcept { return selectable_; }
    void setSelectable(bool selectable) { selectable_ = selectable; }
    [[nodiscard]] NSTextAlignment alignment() const noexcept { return alignment_; }
    void setAlignment(NSTextAlignment alignment);
    [[nodiscard]] NSLineBreakMode lineBreakMode() const noexcept { return lineBreak_; }
    void setLineBreakMode(NSLineBreakMode mode);
    /// 0 is no limit.
    [[nodiscard]] CGFloat preferredMaxLayoutWidth() const noexcept { return maxWidth_; }
    void setPreferredMaxLayoutWidth(CGFloat width);
    [[nodiscard]] int maximumNumberOfLines() const noexcept { return maxLines_; }
    void setMaximumNumberOfLines(int lines);

    /// The field editor while this has the focus; null else.
    [[nodiscard]] const std::shared_ptr<NSText>& currentEditor() const noexcept { return editor_; }

    void setFont(std::shared_ptr<NSFont> font) override;
    [[nodiscard]] CGSize intrinsicContentSize() const override;
    [[nodiscard]] bool acceptsFirstResponder() const override {
        return (editable_ || selectable_) && isEnabled();
    }
    bool becomeFirstResponder() override;
    bool resignFirstResponder() override;
    void mouseDown(const NSEvent& event) override;
    [[nodiscard]] CGRect focusRingMaskBounds() const override { return editable_ ? bounds() : CGRect{}; }
    void drawFocusRingMask() override;
    void drawRect(const CGRect& dirtyRect) override;

  private:
    [[nodiscard]] TextLayout textLayout(CGFloat width) const;
    [[nodiscard]] CGFloat inset() const noexcept { return bezeled_ || bordered_ ? 3 : 0; }
    void contentChanged();

    std::string text_;
    std::shared_ptr<NSAttributedString> attributed_;
    std::shared_ptr<NSColor> textColor_;
    std::shared_ptr<NSColor> background_;
    std::shared_ptr<NSText> editor_;
    CGFloat maxWidth_ = 0;
    int maxLines_ = 0;
    NSTextAlignment alignment_ = NSTextAlignment::natural;
    NSLineBreakMode lineBreak_ = NSLineBreakMode::byWordWrapping;
    bool drawsBackground_ = true;
    bool bezeled_ = true;
    bool bordered_ = false;
    bool editable_ = true;
    bool selectable_ = true;
};

}  // namespace zqcore::platform
