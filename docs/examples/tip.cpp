// docs/examples/tip.cpp
#include "Classes/UI/TipManager/TipInfo.h"
#include "Classes/UI/TipManager/TipableButton.h"
#include "Platform/AppKit/DefaultDisplay.h"
#include "Platform/AppKit/NSApplication.h"
#include "Platform/AppKit/NSWindow.h"

int main() {
    using namespace zqcore;
    Display::setDefaultMaker(openDefaultDisplay);

    const auto tip = TipInfo::make();
    tip->text = "Copy the translation";
    tip->trigger = TipTrigger::keyCombo(*KeyCombo::make(Key::c, NSEventModifierFlagCommand));

    const auto button = makeObject<TipableButton>(CGRect{{100, 80}, {120, 28}});
    button->setTitle("Copy");
    button->setTipInfo(tip);  // shows when the pointer rests on the button

    const auto window = makeObject<NSWindow>(CGRect{{200, 200}, {320, 180}}, NSWindowStyleMaskTitled);
    window->contentView()->addSubview(button);
    window->makeKeyAndOrderFront();
    NSApplication::shared()->run();
}
