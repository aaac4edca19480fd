#include <algorithm>
#include <cmath>

#include "Platform/AppKit/ImagePlacement.h"
#include "Platform/AppKit/NSButton.h"
#include "Platform/Foundation/NSImage.h"
#include "Platform/Graphics/CGContext.h"
#include "Platform/Graphics/CGPath.h"
#include "Platform/Graphics/CGRect.h"
#include "Platform/Graphics/NSAttributedString.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSGraphicsContext.h"
#include "Platform/Graphics/TextLayout.h"

namespace zqcore::platform {

namespace {

constexpr CGFloat kImageGap = 4;
constexpr CGFloat kMarkSize = 14;
constexpr CGFloat kDisabledAlpha = 0.35;

bool hasMark(NSButtonType type) { return type == NSButtonType::switchButton || type == NSButtonType::radio; }

CGFloat cornerRadius(NSBezelStyle style, CGSize size) {
    switch (style) {
        case NSBezelStyle::regularSquare:
        case NSBezelStyle::shadowlessSquare:
        case NSBezelStyle::smallSquare:
            return 2;
        case NSBezelStyle::circular:
        case NSBezelStyle::helpButton:
            return std::min(size.width, size.height) / 2;
        default:
            return 5;
    }
}

TextLayout titleLayout(const NSButton& button) {
    const TextLayoutOptions options{TextLayoutOptions::kNoLimit, NSLineBreakMode::byClipping,
                                    NSTextAlignment::left};
    if (button.attributedTitle()) return TextLayout(*button.attributedTitle(), button.font(), options);
    return TextLayout(button.title(), button.font(), options);
}

bool hasTitle(const NSButton& button) {
    return button.attributedTitle() ? button.attributedTitle()->length() > 0 : !button.title().empty();
}

// The box or ring before the title of a switch or radio button.
void drawMark(CGContext& context, const NSButton& button, const CGRect& rect) {
    const bool on = button.state() != NSControlStateValue::off;
    const CGFloat radius = button.buttonType() == NSButtonType::radio ? kMarkSize / 2 : 3;
    const auto box = CGPath::roundedRect(CGRectInset(rect, 0.5, 0.5), radius, radius);
    context.setFillColor((on ? NSColor::controlAccentColor() : NSColor::controlColor())->cgColor());
    context.fill(*box);
    context.setStrokeColor(NSColor::separatorColor()->cgColor());
    context.setLineWidth(1);
    context.stroke(*box);
    if (!on) return;
    context.setFillColor(CGColor::white(1));
    context.setStrokeColor(CGColor::white(1));
    const CGPoint centre{CGRectGetMidX(rect), CGRectGetMidY(rect)};
    if (button.state() == NSControlStateValue::mixed) {
        context.fill(*CGPath::roundedRect(CGRectInset(rect, 3, kMarkSize / 2 - 1), 1, 1));
    } else if (button.buttonType() == NSButtonType::radio) {
        context.fill(*CGPath::roundedRect(CGRectInset(rect, 4.5, 4.5), 2.5, 2.5));
    } else {
        const CGFloat up = button.isFlipped() ? -1 : 1;
        const auto tick = CGPath::make();
        tick->moveTo({centre.x - 3.5, centre.y - 0.5 * up});
        tick->lineTo({centre.x - 1, centre.y - 3 * up});
        tick->lineTo({centre.x + 3.5, centre.y + 3.5 * up});
        context.setLineWidth(1.75);
        context.setLineCap(CGLineCap::round);
        context.setLineJoin(CGLineJoin::round);
        context.stroke(*tick);
    }
}

}  // namespace

CGSize NSButton::intrinsicContentSize() const {
    const bool text = hasTitle(*this);
    CGSize size{0, 0};
    if (text) {
        size = titleLayout(*this).size();
        size.width = std::ceil(size.width);
    }
    if (hasMark(type_)) return {size.width + kMarkSize + kImageGap, std::max(size.height, kMarkSize)};
    if (image_) {
        const CGSize picture = image_->size();
        size.width += picture.width + (text ? kImageGap : 0);
        size.height = std::max(size.height, picture.height);
    }
    if (!bordered_) return size;
    return {size.width + 2 * 10, std::max(size.height + 2 * 3, 21.0)};
}

// The shape of the bezel, of the mark or, without both, of the bounds.
void NSButton::drawFocusRingMask() {
    const auto current = NSGraphicsContext::currentContext();
    if (!current) return;
    const CGRect area = bounds();
    const CGFloat radius = hasMark(type_) ? 3 : bordered_ ? cornerRadius(bezelStyle_, area.size) : 0;
    current->cgContext()->fill(*CGPath::roundedRect(area, radius, radius));
}

void NSButton::drawRect(const CGRect& /*dirtyRect*/) {
    const auto current = NSGraphicsContext::currentContext();
    if (!current) return;
    CGContext& context = *current->cgContext();
    const CGRect area = bounds();
    const bool highlighted = cell_->isHighlighted();
    const bool shownOn = highlighted || state_ == NSControlStateValue::on;
    if (!isEnabled()) context.setAlpha(kDisabledAlpha);
    const bool mark = hasMark(type_);
    if (showsBorder() && !mark && area.size.width > 1 && area.size.height > 1) {
        const CGFloat radius = cornerRadius(bezelStyle_, area.size);
        const auto edge = CGPath::roundedRect(CGRectInset(area, 0.5, 0.5), radius, radius);
        context.setFillColor(NSColor::controlColor()->cgColor());
        context.fill(*edge);
        if (shownOn && (cell_->highlightsBy() &
                        (NSPushInCellMask | NSChangeGrayCellMask | NSChangeBackgroundCellMask)) != 0) {
            context.setFillColor(NSColor::labelColor()->colorWithAlphaComponent(0.15)->cgColor());
            context.fill(*edge);
        }
        context.setStrokeColor(NSColor::separatorColor()->cgColor());
        context.setLineWidth(1);
        context.stroke(*edge);
    }
    const bool alternate = alternateImage_ && shownOn && (cell_->highlightsBy() & NSContentsCellMask) != 0;
    const auto& picture = alternate ? alternateImage_ : image_;
    const bool text = hasTitle(*this);
    const CGSize titleSize = text ? titleLayout(*this).size() : CGSize{};
    const CGFloat room = std::max(0.0, area.size.width - (text ? titleSize.width + kImageGap : 0));
    const CGSize pictureSize =
        mark      ? CGSize{kMarkSize, kMarkSize}
        : picture ? placedImage({{0, 0}, {room, area.size.height}}, picture->size(), imageScaling_).size
                  : CGSize{};
    const bool before = mark || picture;
    const CGFloat width = pictureSize.width + (before && text ? kImageGap : 0) + titleSize.width;
    CGFloat x = mark ? area.origin.x : area.origin.x + (area.size.width - width) / 2;
    const CGFloat middle = CGRectGetMidY(area);
    if (mark) drawMark(context, *this, {{x, middle - kMarkSize / 2}, pictureSize});
    if (!mark && picture)
        picture->drawTinted(context, {{x, middle - pictureSize.height / 2}, pictureSize}, tint_);
    if (!text) return;
    if (before) x += pictureSize.width + kImageGap;
    titleLayout(*this).draw(context, {{x, middle - titleSize.height / 2}, titleSize}, tint_);
}

}  // namespace zqcore::platform
