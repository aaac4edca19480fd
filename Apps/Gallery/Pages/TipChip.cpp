#include "Apps/Gallery/Pages/TipChip.h"

#include <cmath>

#include "Apps/Gallery/Stage.h"
#include "Platform/Graphics/NSColor.h"
#include "Platform/QuartzCore/CALayer.h"

namespace gallery {

std::shared_ptr<TipableView> tipChip(std::string_view title, CGSize size, std::shared_ptr<TipInfo> tip) {
    auto chip = makeObject<TipableView>(CGRect{{}, size});
    chip->setWantsLayer(true);
    chip->layer()->setBackgroundColor(NSColor::controlColor()->cgColor());
    chip->layer()->setBorderColor(NSColor::separatorColor()->cgColor());
    chip->layer()->setBorderWidth(1);
    chip->layer()->setCornerRadius(6);
    const auto text = label(title, 12);
    const CGSize room = text->frame().size;
    text->setFrameOrigin(
        {std::round((size.width - room.width) / 2), std::round((size.height - room.height) / 2)});
    chip->addSubview(text);
    chip->setTipInfo(std::move(tip));
    return chip;
}

void showEachTip(Stage& stage, Sheet& sheet) {
    for (const auto& sample : sheet.samples()) {
        stage.pointTo(*sample);
        stage.advance(1.5);
        stage.keepWindows();
        stage.pointAway();
        stage.advance(0.5);
    }
}

}  // namespace gallery
