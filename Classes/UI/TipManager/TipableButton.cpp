#include "Classes/UI/TipManager/TipableButton.h"

namespace zqcore {

void TipableButton::mouseDown(const NSEvent& event) {
    // Before the press is tracked, while monitors that would close the tip are silent.
    closeTip();
    TipableOver<NSButton>::mouseDown(event);
}

}  // namespace zqcore
