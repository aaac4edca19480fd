#include <cstdio>

#include "Classes/UI/TipManager/TipManager.h"
#include "Classes/UI/TipManager/TipableButton.h"
#include "Platform/AppKit/NSWindow.h"
#include "TestKit/UI/HeadlessApplication.h"

int main() {
    using namespace zqcore;
    testkit::HeadlessApplication ui;
    const auto window = makeObject<NSWindow>(CGRect{{100, 200}, {320, 180}}, NSWindowStyleMaskTitled);
    window->orderFront();
    const auto button = makeObject<TipableButton>(CGRect{{100, 80}, {120, 28}});
    const auto tip = TipInfo::make();
    tip->text = "Copy the translation";
    button->setTipInfo(tip);
    window->contentView()->addSubview(button);
    ui.turn();
    ui.display().movePointer({220, 290});
    ui.advance(2);
    const bool shown = TipManager::windowNumber().has_value();
    std::puts(shown ? "the tip came" : "no tip");
    TipManager::close();
    return shown ? 0 : 1;
}
