#include "Platform/AppKit/NSTextField.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Platform/AppKit/NSEvent.h"
#include "Platform/Foundation/Text/Utf16.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGPath.h"
#include "Platform/Graphics/NSAttributedString.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSGraphicsContext.h"

namespace zqcore::platform {

std::shared_ptr<NSTextField> NSTextField::labelWithString(std::string_view text) {
    auto label = makeObject<NSTextField>();
    label->setEditable(false);
    label->setSelectable(false);
    label->setBezeled(false);
    label->setDrawsBackground(false);
    label->setMaximumNumberOfLines(1);
    label->setLineBreakMode(NSLineBreakMode::byClipping);
    label->setStringValue(std::string(text));
    return label;
}

void NSTextField::contentChanged() {
    invalidateIntrinsicContentSize();
    setNeedsDisplay(true);
}

void NSTextField::setStringValue(std::string text) {
    if (text == text_ && !attributed_) return;
    text_ = std::move(text);
    attributed_.reset();
    if (editor_) editor_->setString(text_);
    contentChanged();
}
void NSTextField::setAttributedStringValue(std::shared_ptr<NSAttributedString> text) {
    attributed_ = std::move(text);
    text_ = attributed_ ? attributed_->string() : std::string();
    contentChanged();
}
void NSTextField::setFont(std::shared_ptr<NSFont> font) {
    NSControl::setFont(std::move(font));
    contentChanged();
}
void NSTextField::setTextColor(std::shared_ptr<NSColor> color) {
    textColor_ = std::move(color);
    setNeedsDisplay(true);
}
void NSTextField::setBackgroundColor(std::shared_ptr<NSColor> color) {
    background_ = std::move(color);
    setNeedsDisplay(true);
}
void NSTextField::setDrawsBackground(bool draws) {
    drawsBackground_ = draws;
    setNeedsDisplay(true);
}
void NSTextField::setBezeled(bool bezeled) {
    bezeled_ = bezeled;
    contentChanged();
}
void NSTextField::setBordered(bool bordered) {
    bordered_ = bordered;
    contentChanged();
}
void NSTextField::setEditable(bool editable) {
    editable_ = editable;
    if (editable) selectable_ = true;
}
void NSTextField::setAlignment(NSTextAlignment alignment) {
    alignment_ = alignment;
    setNeedsDisplay(true);
}
void NSTextField::setLineBreakMode(NSLineBreakMode mode) {
    lineBreak_ = mode;
    contentChanged();
}
void NSTextField::setPreferredMaxLayoutWidth(CGFloat width) {
    maxWidth_ = width;
    contentChanged();
}
void NSTextField::setMaximumNumberOfLines(int lines) {
    maxLines_ = lines;
    contentChanged();
}

TextLayout NSTextField::textLayout(CGFloat width) const {
    const TextLayoutOptions options{width > 0 ? width : TextLayoutOptions::kNoLimit, lineBreak_, alignment_};
    if (attributed_) return TextLayout(*attributed_, font(), options);
    return TextLayout(text_, font(), options);
}

CGSize NSTextField::intrinsicContentSize() const {
    const TextLayout layout = textLayout(maxWidth_);
    CGSize size = layout.size();
    size.width = std::ceil(size.width);
    if (maxWidth_ > 0) size.width = std::min(size.width, maxWidth_);
    const auto lines = static_cast<CGFloat>(std::max<std::size_t>(layout.lineCount(), 1));
    if (maxLines_ > 0 && lines > maxLines_) size.height = size.height / lines * maxLines_;
    return {size.width + 2 * inset(), size.height + 2 * inset()};
}

bool NSTextField::becomeFirstResponder() {
    if (!editable_) return true;
    editor_ = makeObject<NSText>();
    editor_->setString(text_);
    editor_->setSelectedRange({0, utf16Length(text_)});
    return true;
}

bool NSTextField::resignFirstResponder() {
    editor_.reset();
    return true;
}

// What can't be selected leaves the mouse to what lies behind it.
void NSTextField::mouseDown(const NSEvent& event) {
    if (!selectable_ || !isEnabled()) NSControl::mouseDown(event);
}

void NSTextField::drawRect(const CGRect& /*dirtyRect*/) {
    const auto current = NSGraphicsContext::currentContext();
    if (!current) return;
    CGContext& context = *current->cgContext();
    const CGRect area = bounds();
    if (drawsBackground_) {
        context.setFillColor((background_ ? background_ : NSColor::controlBackgroundColor())->cgColor());
        context.fill(area);
    }
    if (bezeled_ || bordered_) {
        context.setStrokeColor(NSColor::separatorColor()->cgColor());
        context.setLineWidth(1);
        context.stroke(*CGPath::rect(CGRectInset(area, 0.5, 0.5)));
    }
    const CGRect inner = inset() > 0 ? CGRectInset(area, inset(), inset()) : area;
    if (CGRectIsNull(inner) || text_.empty()) return;
    context.saveGState();
    context.clipTo(area);
    textLayout(inner.size.width).draw(context, inner, textColor_);
    context.restoreGState();
}

void NSTextField::drawFocusRingMask() {
    if (const auto current = NSGraphicsContext::currentContext()) current->cgContext()->fill(bounds());
}

void NSTextView::drawRect(const CGRect& /*dirtyRect*/) {
    const auto current = NSGraphicsContext::currentContext();
    if (!current || string().empty()) return;
    const TextLayoutOptions options{bounds().size.width, NSLineBreakMode::byWordWrapping,
                                    NSTextAlignment::natural};
    TextLayout(string(), NSFont::systemFontOfSize(NSFont::systemFontSize()), options)
        .draw(*current->cgContext(), bounds());
}

}  // namespace zqcore::platform
