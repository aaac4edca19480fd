#include "Platform/Scripting/NSDistributedNotificationCenter.h"

#include <utility>

namespace zqcore::platform {

NSDistributedNotificationCenter& NSDistributedNotificationCenter::defaultCenter() {
    static NSDistributedNotificationCenter center;
    return center;
}

bool NSDistributedNotificationCenter::postNotificationName(std::string name, Value object,
                                                           std::optional<ValueDictionary> userInfo) {
    return ScriptingBus::current().broadcast({std::move(name), std::move(object), std::move(userInfo)});
}

std::shared_ptr<void> NSDistributedNotificationCenter::addObserver(
    const std::string& name, std::shared_ptr<DispatchQueue> queue,
    std::function<void(const NSDistributedNotification&)> block) {
    if (!block) return nullptr;
    auto shared = std::make_shared<const decltype(block)>(std::move(block));
    return ScriptingBus::current().listen(
        name, [queue = std::move(queue), shared](const NSDistributedNotification& notification) {
            queue->async([shared, notification] { (*shared)(notification); });
        });
}

}  // namespace zqcore::platform
