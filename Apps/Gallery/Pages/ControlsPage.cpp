// Controls: buttons, fields, segments, progress, effect views, and a table that scrolls.

#include <any>

#include "Apps/Gallery/GalleryPage.h"
#include "Apps/Gallery/Sheet.h"
#include "Apps/Gallery/Stage.h"
#include "Platform/AppKit/NSButton.h"
#include "Platform/AppKit/NSProgressIndicator.h"
#include "Platform/AppKit/NSScrollView.h"
#include "Platform/AppKit/NSSegmentedControl.h"
#include "Platform/AppKit/NSTableCellView.h"
#include "Platform/AppKit/NSTableColumn.h"
#include "Platform/AppKit/NSTableView.h"
#include "Platform/AppKit/NSVisualEffectView.h"
#include "Platform/Foundation/NSImage.h"
#include "Platform/Graphics/CIFilter.h"
#include "Platform/Graphics/NSBezierPath.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/QuartzCore/CALayer.h"

namespace gallery {

namespace {

void addButtons(Sheet& sheet) {
    sheet.beginRow("Buttons");
    struct Button {
        const char* caption;
        const char* title;
        NSButtonType type;
        NSBezelStyle bezel;
    };
    const Button buttons[] = {
        {"push", "Translate", NSButtonType::momentaryPushIn, NSBezelStyle::rounded},
        {"held down", "Translate", NSButtonType::momentaryPushIn, NSBezelStyle::rounded},
        {"disabled", "Translate", NSButtonType::momentaryPushIn, NSBezelStyle::rounded},
        {"stays on", "Pin", NSButtonType::pushOnPushOff, NSBezelStyle::smallSquare},
        {"round", "?", NSButtonType::momentaryPushIn, NSBezelStyle::helpButton},
        {"on", "Speak", NSButtonType::switchButton, NSBezelStyle::rounded},
        {"mixed", "Speak", NSButtonType::switchButton, NSBezelStyle::rounded},
        {"chosen", "Words", NSButtonType::radio, NSBezelStyle::rounded},
    };
    for (const Button& each : buttons) {
        const auto button = makeObject<NSButton>();
        button->setTitle(each.title);
        button->setButtonType(each.type);
        button->setBezelStyle(each.bezel);
        const std::string_view caption = each.caption;
        if (caption == "held down") button->cell()->setHighlighted(true);
        if (caption == "disabled") button->setEnabled(false);
        if (caption == "stays on" || caption == "on" || caption == "chosen")
            button->setState(NSControlStateValue::on);
        if (caption == "mixed") button->setState(NSControlStateValue::mixed);
        const bool round = each.bezel == NSBezelStyle::helpButton;
        button->setFrameSize(round ? CGSize{22, 22} : button->intrinsicContentSize());
        sheet.add(button, caption);
    }
}

void addFields(Sheet& sheet) {
    sheet.beginRow("Fields and segments");
    for (const char* caption : {"with the focus", "without", "not editable"}) {
        const auto field = makeObject<NSTextField>(CGRect{{}, {150, 22}});
        field->setStringValue(caption == std::string_view("with the focus") ? "好的译文"
                                                                            : "A good translation");
        field->setEditable(caption != std::string_view("not editable"));
        sheet.add(field, caption);
    }
    const auto segments = makeObject<NSSegmentedControl>();
    segments->setSegmentCount(3);
    for (int i = 0; i < 3; ++i)
        segments->setLabel(std::vector{"Auto", "English", "中文"}[static_cast<std::size_t>(i)], i);
    segments->setSelectedSegment(1);
    segments->setFrameSize(segments->intrinsicContentSize());
    sheet.add(segments, "one of three");
}

std::shared_ptr<NSView> darkBox(CGSize size) {
    const auto box = makeObject<NSView>(CGRect{{}, size});
    box->layer()->setBackgroundColor(CGColor::rgb(0.15, 0.17, 0.2));
    box->layer()->setCornerRadius(6);
    return box;
}

void addProgress(Sheet& sheet) {
    sheet.beginRow("Progress and effects");
    const auto spinner = [](NSControlSize size) {
        const auto made = makeObject<NSProgressIndicator>();
        made->setStyle(NSProgressIndicatorStyle::spinning);
        made->setControlSize(size);
        made->setFrameSize(made->intrinsicContentSize());
        made->startAnimation();
        return made;
    };
    sheet.add(spinner(NSControlSize::regular), "regular");
    sheet.add(spinner(NSControlSize::small), "small");
    const auto bar = makeObject<NSProgressIndicator>(CGRect{{}, {120, 16}});
    bar->startAnimation();
    sheet.add(bar, "a bar");
    const auto box = darkBox({60, 40});
    const auto white = spinner(NSControlSize::small);
    const auto filter = CIFilter::filterWithName("CIColorControls");
    filter->setValueForKey(1, "inputBrightness");
    white->setContentFilters({filter});
    white->setFrameOrigin({22, 12});
    box->addSubview(white);
    sheet.add(box, "made white by a filter");

    const auto ground = makeObject<NSView>(CGRect{{}, {90, 50}});
    for (int stripe = 0; stripe < 9; stripe += 2) {
        const auto part = makeObject<NSView>(CGRect{{stripe * 10.0, 0}, {10, 50}});
        part->layer()->setBackgroundColor(CGColor::rgb(0.93, 0.32, 0.5));
        ground->addSubview(part);
    }
    const auto effect = makeObject<NSVisualEffectView>(CGRect{{15, 5}, {60, 40}});
    effect->setMaskImage(NSImage::imageWithSize({60, 40}, false, [](const CGRect& area) {
        NSColor::blackColor()->set();
        NSBezierPath::bezierPathWithRoundedRect(area, 14, 14)->fill();
        return true;
    }));
    const auto text = label("masked", 12);
    text->setFrameOrigin({8, 12});
    effect->addSubview(text);
    ground->addSubview(effect);
    sheet.add(ground, "an effect view");
}

class Words final : public NSTableViewDelegate {
  public:
    int numberOfRowsInTableView(NSTableView& /*table*/) override { return 60; }
    CGFloat heightOfRow(NSTableView& /*table*/, int row) override { return row % 5 == 0 ? 26 : 20; }
    std::shared_ptr<NSView> viewForTableColumn(NSTableView& table,
                                               const std::shared_ptr<NSTableColumn>& column,
                                               int row) override {
        auto cell = std::dynamic_pointer_cast<NSTableCellView>(
            table.makeViewWithIdentifier(column->identifier(), nullptr));
        if (!cell) {
            cell = makeObject<NSTableCellView>();
            cell->setIdentifier(column->identifier());
            const auto text = label("", 12);
            cell->addSubview(text);
            cell->setTextField(text);
        }
        const bool word = column->identifier() == "word";
        cell->textField()->setStringValue((word ? "word " : "译文 ") + std::to_string(row));
        cell->textField()->setFrame({{8, 2}, cell->textField()->intrinsicContentSize()});
        return cell;
    }
};

void addTable(Sheet& sheet) {
    sheet.beginRow("A table in a scroll view");
    const auto table = makeObject<NSTableView>(CGRect{{}, {260, 0}});
    for (const char* name : {"word", "translation"}) {
        const auto column = makeObject<NSTableColumn>(name);
        column->setWidth(130);
        table->addTableColumn(column);
    }
    static const char kept = 0;
    const auto words = std::make_shared<Words>();
    table->setAssociatedValue(&kept, words);
    table->setDelegate(words);
    table->setAllowsMultipleSelection(true);
    table->selectRowIndexes({6, 7, 9}, false);
    const auto scroll = makeObject<NSScrollView>(CGRect{{}, {260, 130}});
    scroll->setHasVerticalScroller(true);
    scroll->setDocumentView(table);
    sheet.add(scroll, "rows chosen, and a knob that tells the place");
}

void fill(Sheet& sheet) {
    addButtons(sheet);
    addFields(sheet);
    addProgress(sheet);
    addTable(sheet);
}

void play(Stage& stage, Sheet& sheet) {
    for (const auto& sample : sheet.samples()) {
        if (const auto scroll = std::dynamic_pointer_cast<NSScrollView>(sample)) {
            stage.pointTo(*scroll);
            stage.application().display().scroll(0, -90);
            stage.pointAway();
        }
        const auto field = std::dynamic_pointer_cast<NSTextField>(sample);
        if (field && field->stringValue() == "好的译文") sheet.window()->makeFirstResponder(field);
    }
    stage.advance(0.1);
}

}  // namespace

const GalleryPage kControlsPage{"controls", "Controls",
                                "Buttons, fields, segments, progress, effect views and tables", fill, play};

}  // namespace gallery
