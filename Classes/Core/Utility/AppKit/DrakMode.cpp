#include "Classes/Core/Utility/AppKit/DrakMode.h"

#include "Classes/Core/Utility/AppKit/DarkModeManager.h"
#include "Platform/AppKit/GuardedCall.h"
#include "Platform/Combine/WillDeallocSignal.h"

namespace zqcore {

std::shared_ptr<RACDisposable> drak_mode::follow(const std::shared_ptr<NSObject>& object,
                                                 std::function<void(NSObject&, bool isDark)> changed) {
    return DarkModeManager::shared()
        ->isDarkModeValues()
        .takeUntil(rac_willDeallocSignal(object))
        .distinctUntilChanged()
        .deliverOnMainThread()
        .subscribeNext([weak = std::weak_ptr(object), changed = std::move(changed)](const bool& isDark) {
            // The main queue, which calls for each change, lets no exception pass.
            if (const auto held = weak.lock())
                guardedCall("appearance closure", [&] { changed(*held, isDark); });
        });
}

}  // namespace zqcore
