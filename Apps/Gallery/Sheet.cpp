#include "Apps/Gallery/Sheet.h"

#include <algorithm>

#include "Apps/Gallery/GalleryPage.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSFont.h"
#include "Platform/Graphics/NSGraphicsContext.h"

namespace gallery {

namespace {

constexpr CGFloat kMargin = 24;
constexpr CGFloat kCaptionGap = 5;
constexpr CGFloat kRowGap = 14;

}  // namespace

std::shared_ptr<NSTextField> label(std::string_view text, CGFloat size, const std::shared_ptr<NSColor>& color,
                                   CGFloat weight) {
    auto field = NSTextField::labelWithString(text);
    field->setFont(NSFont::systemFontOfSize(size, weight));
    if (color) field->setTextColor(color);
    field->setFrameSize(field->intrinsicContentSize());
    return field;
}

std::shared_ptr<Sheet> Sheet::make(const GalleryPage& page) {
    auto sheet = makeObject<Sheet>();
    const auto title = label(page.title, 20, nullptr, NSFontWeightMedium);
    title->setFrameOrigin({kMargin, 14});
    sheet->addSubview(title);
    const auto about = label(page.about, 12, NSColor::secondaryLabelColor());
    about->setFrameOrigin({kMargin, 42});
    sheet->addSubview(about);
    page.fill(*sheet);
    return sheet;
}

void Sheet::add(const std::shared_ptr<NSView>& sample, std::string_view caption) {
    const CGSize size = sample->frame().size;
    const auto text = label(caption, 11, NSColor::secondaryLabelColor());
    const CGFloat width = std::max(size.width, text->frame().size.width);
    if (next_.x > kMargin && next_.x + width > kSize.width - kMargin) beginRow();
    const CGFloat captionTop = next_.y + size.height + kCaptionGap;
    text->setFrameOrigin({next_.x, captionTop});
    addSubview(text);
    place(sample, next_);
    next_.x += width + gap_;
    rowEnd_ = std::max(rowEnd_, captionTop + text->frame().size.height);
}

void Sheet::place(const std::shared_ptr<NSView>& sample, CGPoint origin) {
    sample->setFrameOrigin(origin);
    addSubview(sample);
    samples_.push_back(sample);
}

void Sheet::beginRow(std::string_view heading) {
    next_ = {kMargin, rowEnd_ > next_.y ? rowEnd_ + kRowGap : next_.y};
    if (heading.empty()) return;
    const auto text = label(heading, 13, nullptr, NSFontWeightMedium);
    text->setFrameOrigin(next_);
    addSubview(text);
    next_.y += text->frame().size.height + 8;
    rowEnd_ = next_.y;
}

void Sheet::drawRect(const CGRect& /*dirtyRect*/) {
    NSColor::windowBackgroundColor()->set();
    NSRectFill(bounds());
}

}  // namespace gallery
