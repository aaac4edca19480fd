// Text: sizes, weights and scripts, lines that break or are cut off, attributes by pattern, measured boxes.

#include "Apps/Gallery/GalleryPage.h"
#include "Apps/Gallery/Sheet.h"
#include "Classes/Core/Extension/AppKit/NSAttributedStringExtension.h"
#include "Classes/Core/Extension/AppKit/NSColorExtension.h"
#include "Classes/Core/Extension/AppKit/StringMeasuring.h"
#include "Platform/Graphics/NSAttributedString.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/Graphics/NSFont.h"
#include "Platform/QuartzCore/CALayer.h"

namespace gallery {

namespace {

constexpr std::string_view kSentence =
    "A translation reads well when the reader forgets that it is one. 好的译文让人忘记它是译文。";

std::shared_ptr<NSTextField> boxed(std::string_view text, CGFloat width, NSLineBreakMode mode,
                                   NSTextAlignment alignment = NSTextAlignment::natural) {
    const auto font = NSFont::systemFontOfSize(12);
    auto field = label(text, 12);
    field->setLineBreakMode(mode);
    field->setAlignment(alignment);
    const bool wraps = mode == NSLineBreakMode::byWordWrapping || mode == NSLineBreakMode::byCharWrapping;
    if (wraps) {
        field->setMaximumNumberOfLines(0);
        field->setPreferredMaxLayoutWidth(width);
    }
    field->setFrameSize({width, zq_height(text, wraps ? width : 0, font)});
    // A rule round the measured room shows whether the text fills just that.
    field->setWantsLayer(true);
    field->layer()->setBorderWidth(1);
    field->layer()->setBorderColor(NSColor::separatorColor()->cgColor());
    return field;
}

void addAttributed(Sheet& sheet) {
    const auto text =
        zq_create<NSMutableAttributedString>("Open #Orbel# and press #Translate#: 打开 #Orbel# 并按 #翻译#。",
                                             NSFont::systemFontOfSize(14), NSColor::labelColor());
    zq_update(*text, NSFont::systemFontOfSize(14, NSFontWeightBold), NSColor::controlAccentColor(),
              "#[^#]+#");
    zq_update(*text, nullptr, hexColor("#E8543F"), NSRange{0, 4});
    const auto field = label("");
    field->setAttributedStringValue(text);
    field->setFrameSize(field->intrinsicContentSize());
    sheet.add(field, "pattern #[^#]+# in bold accent, units 0 to 3 in #E8543F");
}

void fill(Sheet& sheet) {
    sheet.beginRow("Sizes and weights");
    for (const int size : {11, 13, 17, 24})
        sheet.add(label("Abg 译文", size), std::to_string(size) + " points");
    sheet.add(label("Medium", 17, nullptr, NSFontWeightMedium), "weight 0.23");
    sheet.add(label("Bold", 17, nullptr, NSFontWeightBold), "weight 0.4");
    sheet.add(label("Secondary", 17, NSColor::secondaryLabelColor()), "secondary label");

    sheet.beginRow("Lines, in the room that was measured for them");
    sheet.add(boxed(kSentence, 216, NSLineBreakMode::byWordWrapping), "by words");
    sheet.add(boxed(kSentence, 216, NSLineBreakMode::byCharWrapping), "by characters");
    sheet.add(boxed(kSentence, 216, NSLineBreakMode::byWordWrapping, NSTextAlignment::center), "centred");

    sheet.beginRow("Lines that are cut off");
    sheet.add(boxed(kSentence, 160, NSLineBreakMode::byTruncatingHead), "at the head");
    sheet.add(boxed(kSentence, 160, NSLineBreakMode::byTruncatingMiddle), "in the middle");
    sheet.add(boxed(kSentence, 160, NSLineBreakMode::byTruncatingTail), "at the tail");
    sheet.add(boxed(kSentence, 160, NSLineBreakMode::byClipping), "clipped");

    sheet.beginRow("Attributes");
    addAttributed(sheet);
}

}  // namespace

const GalleryPage kTextPage{"text", "Text",
                            "One pinned family, Chinese included; heights don't depend on the script", fill};

}  // namespace gallery
