#include "Classes/AppleScript/DistributedSender/DistributedSender.h"

#include <utility>

#include "Classes/AppleScript/RequestCommand/ASGuardedCall.h"
#include "Classes/Core/Utility/Codable/JSONTool.h"
#include "Classes/Core/Utility/ZQInfo.h"
#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Scripting/NSDistributedNotificationCenter.h"

namespace zqcore {
const std::shared_ptr<DistributedSender>& DistributedSender::defaultSender() {
    // Never ended: others may still post while the process goes.
    static const auto& sender = *[] {
        auto* made = new std::shared_ptr<DistributedSender>(new DistributedSender);
        (*made)->listen();
        return made;
    }();
    return sender;
}

DistributedSender::DistributedSender()
    : queue_(DispatchQueue::serial("com.tessara.distributed.queue", DispatchQoS::userInitiated)) {}

void DistributedSender::listen() {
    auto observation = NSDistributedNotificationCenter::defaultCenter().addObserver(
        std::string(kPostNotification), queue_, [weak = weak_from_this()](const auto& notification) {
            if (const auto self = weak.lock()) self->receive(notification);
        });
    cancellables_.emplace_back([observation = std::move(observation)]() mutable { observation.reset(); });
}

void DistributedSender::injectPostHandler(PostHandler handler) {
    const std::lock_guard lock(mutex_);
    // Swapped, so that the former one ends without the lock.
    postHandler_.swap(handler);
}

bool DistributedSender::tryPost(const ASRequestCarrier& request) const {
    if (ZQInfo::appSandboxed()) return false;
    request.prepare();
    auto json = request.encode();
    if (!json) return false;
    ZQLogInfo([&] { return "DistributedSender 发送通知：" + *json; });
    return NSDistributedNotificationCenter::defaultCenter().postNotificationName(
        std::string(kPostNotification), ZQInfo::appIdentifier(),
        ValueDictionary{{"request", std::move(*json)}});
}

void DistributedSender::callHandler(const std::function<void()>& call) {
    static_cast<void>(guardedCall("DistributedSender handler", call));
}

void DistributedSender::receive(const NSDistributedNotification& notification) {
    // Neither one's own posts nor those of another running copy.
    const std::string* sender = notification.object.asString();
    if (sender && *sender == ZQInfo::appIdentifier()) return;
    handlePostNotification(notification);
}

void DistributedSender::handlePostNotification(const NSDistributedNotification& notification) {
    const Value* request = notification.userInfo ? notification.userInfo->find("request") : nullptr;
    const std::string* json = request ? request->asString() : nullptr;
    if (!json) return;
    ZQLogInfo([&] { return "DistributedSender 收到通知：" + *json; });
    const auto object = JSONTool::decodeToJSONObject(*json);
    const auto* dictionary = object ? object->asDictionary() : nullptr;
    const Value* field = dictionary ? dictionary->find("path") : nullptr;
    const std::string* path = field ? field->asString() : nullptr;
    if (!path) return;
    PostHandler handler;
    {
        const std::lock_guard lock(mutex_);
        handler = postHandler_;
    }
    if (handler) callHandler([&] { handler(*path, *json); });
}

}  // namespace zqcore
