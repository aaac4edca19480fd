#include "Platform/Foundation/NotificationSignal.h"

#include <utility>

namespace zqcore::platform {

RACSignal<std::shared_ptr<const NSNotification>> rac_addObserverForName(
    NSNotificationCenter& center, std::string name, const std::shared_ptr<NSObject>& object) {
    using Signal = RACSignal<std::shared_ptr<const NSNotification>>;
    // To the center a null object means anyone, so one that died meanwhile must not become null.
    const bool aboutAnyone = object == nullptr;
    return Signal([&center, name = std::move(name), weak = std::weak_ptr(object),
                   aboutAnyone](const Signal::Subscriber& subscriber) {
        const auto held = weak.lock();
        if (!held && !aboutAnyone) return;
        const auto token =
            center.addObserverForName(name, held, [subscriber](const NSNotification& notification) {
                subscriber->sendNext(
                    std::static_pointer_cast<const NSNotification>(notification.weak_from_this().lock()));
            });
        subscriber->disposable()->add([&center, token] { center.removeObserver(token); });
    });
}

}  // namespace zqcore::platform
