// Tip cards: what a tip can say.

#include "Apps/Gallery/GalleryPage.h"
#include "Apps/Gallery/Pages/TipChip.h"

namespace gallery {

namespace {

TipTrigger combo(Key key, NSEventModifierFlags modifiers) {
    return TipTrigger::keyCombo(*KeyCombo::make(key, modifiers));
}

constexpr auto kCommand = NSEventModifierFlagCommand;
constexpr auto kShift = NSEventModifierFlagShift;
constexpr auto kOption = NSEventModifierFlagOption;

std::shared_ptr<TipInfo> tipSaying(std::string_view text, std::optional<TipTrigger> trigger = {}) {
    auto tip = TipInfo::make();
    tip->location = TipLocation::bottom;
    tip->horizontalAlignment = TipHorizontalAlignment::left;
    tip->text = text;
    tip->trigger = std::move(trigger);
    return tip;
}

void fill(Sheet& sheet) {
    const auto add = [&](std::string_view title, CGPoint origin, std::shared_ptr<TipInfo> tip) {
        sheet.place(tipChip(title, {190, 28}, std::move(tip)), origin);
    };
    constexpr CGFloat kColumns[] = {24, 276, 528};

    add("one line", {kColumns[0], 76}, tipSaying("Pin the window"));
    add("key caps", {kColumns[1], 76}, tipSaying("Translate", combo(Key::d, kOption | kShift)));
    add("Chinese", {kColumns[2], 76}, tipSaying("复制译文", combo(Key::c, kCommand)));

    add("composite triggers", {kColumns[0], 186},
        tipSaying("Confirm",
                  TipTrigger::composite({TipTrigger::key(Key::return_), combo(Key::return_, kCommand),
                                         TipTrigger::key(Key::space)})));
    const auto doubled = KeyCombo::makeDoubled(kOption);
    add("a modifier twice", {kColumns[1], 186}, tipSaying("Show", TipTrigger::keyCombo(*doubled)));
    add("texts as caps", {kColumns[2], 186}, tipSaying("Zoom", TipTrigger::texts({"⌃", "scroll"})));

    const auto both = tipSaying("Copy the translation", combo(Key::c, kCommand));
    both->rightText = "复制原文";
    both->rightTrigger = combo(Key::c, kCommand | kShift);
    add("left and right button", {kColumns[0], 296}, both);

    const auto actions = tipSaying("Close", TipTrigger::key(Key::escape));
    actions->windowActions = {{"Next page", TipTrigger::key(Key::rightArrow)},
                              {"Speak", combo(Key::s, kOption)},
                              {"收藏", combo(Key::b, kCommand)}};
    add("shortcuts of the window", {kColumns[1], 296}, actions);

    add("a longer text", {kColumns[2], 296}, tipSaying("Takes the room it needs"));
}

}  // namespace

const GalleryPage kTipCardsPage{"tip-cards", "Tips: what they say",
                                "Lines, key caps, pictures of the mouse's buttons, shortcuts of the window",
                                fill, showEachTip};

}  // namespace gallery
