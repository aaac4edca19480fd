// Tips: the four sides and how a tip lines up there.

#include <string>

#include "Apps/Gallery/GalleryPage.h"
#include "Apps/Gallery/Pages/TipChip.h"

namespace gallery {

namespace {

std::shared_ptr<TipInfo> tipAt(TipLocation location) {
    auto tip = TipInfo::make();
    tip->location = location;
    tip->text = "Copy";
    tip->trigger = TipTrigger::keyCombo(*KeyCombo::make(Key::c, NSEventModifierFlagCommand));
    return tip;
}

void addAboveAndBelow(Sheet& sheet, TipLocation location, std::string_view side, CGFloat y) {
    constexpr std::pair<TipHorizontalAlignment, const char*> kAlignments[] = {
        {TipHorizontalAlignment::left, "left"},
        {TipHorizontalAlignment::center, "center"},
        {TipHorizontalAlignment::right, "right"}};
    CGFloat x = 40;
    for (const auto& [alignment, name] : kAlignments) {
        const auto tip = tipAt(location);
        tip->horizontalAlignment = alignment;
        sheet.place(tipChip(std::string(side) + ", " + name, {190, 30}, tip), {x, y});
        x += 245;
    }
}

void addBeside(Sheet& sheet, TipLocation location, std::string_view side, CGFloat left, CGFloat y) {
    constexpr std::pair<TipVerticalAlignment, const char*> kAlignments[] = {
        {TipVerticalAlignment::top, "top"},
        {TipVerticalAlignment::center, "center"},
        {TipVerticalAlignment::bottom, "bottom"}};
    CGFloat x = left;
    for (const auto& [alignment, name] : kAlignments) {
        const auto tip = tipAt(location);
        tip->verticalAlignment = alignment;
        sheet.place(tipChip(std::string(side) + ", " + name, {100, 66}, tip), {x, y});
        x += 245;
    }
}

void fill(Sheet& sheet) {
    addAboveAndBelow(sheet, TipLocation::top, "top", 140);
    addAboveAndBelow(sheet, TipLocation::bottom, "bottom", 200);
    addBeside(sheet, TipLocation::left, "left", 150, 310);
    addBeside(sheet, TipLocation::right, "right", 24, 420);
}

}  // namespace

const GalleryPage kTipsPage{"tips", "Tips: sides and alignments",
                            "Rest the pointer on a box. One tip is up at a time; a picture shows them all",
                            fill, showEachTip};

}  // namespace gallery
