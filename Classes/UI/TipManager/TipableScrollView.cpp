#include "Classes/UI/TipManager/TipableScrollView.h"

#include <string>

#include "Classes/UI/TipManager/TipManager.h"
#include "Platform/AppKit/NSClipView.h"
#include "Platform/Combine/WillDeallocSignal.h"
#include "Platform/Foundation/NotificationSignal.h"

namespace zqcore {

void TipableScrollView::setup() {
    NSScrollView::setup();
    const auto content = contentView();
    content->setPostsBoundsChangedNotifications(true);
    rac_addObserverForName(NSNotificationCenter::defaultCenter(),
                           std::string(NSViewBoundsDidChangeNotification), content)
        .takeUntil(rac_willDeallocSignal(content))
        .subscribeNext([](const auto&) { TipManager::closeIfNeed(); });
}

}  // namespace zqcore
