#include "Classes/UI/TipManager/Tipable.h"

#include "Classes/Core/Extension/AppKit/NSViewExtension.h"
#include "Classes/UI/TipManager/TipManager.h"

namespace zqcore {

void Tipable::updateTip(bool isShow) {
    if (isShow) {
        auto info = tipInfo_;
        if (!info && fetchTipInfo_) info = fetchTipInfo_();
        if (info) {
            isTipShowing_ = true;
            TipManager::showTip(viewForTip(), info);
            return;
        }
    }
    closeTip();
}

void Tipable::closeTip() {
    if (!std::exchange(isTipShowing_, false)) return;
    TipManager::close(viewForTip());
}

void Tipable::updateTrackingAreaForTip() {
    zq_convenienceAddTrackingArea(
        *viewForTip(),
        trackOptionsForTip().value_or(NSTrackingMouseEnteredAndExited | NSTrackingActiveAlways));
}

}  // namespace zqcore
