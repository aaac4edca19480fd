#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/Base/Export.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Scripting/ScriptingBus.h"

namespace zqcore::platform {

/// Notifications to every listening process of the user, the poster included. Threads: all operations from
/// any; a post blocks for a round trip to the bus on a new connection and behind a full socket only; an
/// observer runs on the queue it named. Order: each sender's is kept on a serial queue. Lifetime: an
/// observation ends with its last reference; it survives the loss of the bus. Failure: without a bus nothing
/// is delivered; a post then gives false.
class ZQ_EXPORT NSDistributedNotificationCenter final {
  public:
    [[nodiscard]] static NSDistributedNotificationCenter& defaultCenter();

    /// Posts to everyone. `object` is a text or null; `userInfo` holds property-list values. Gives whether
    /// the bus took it: not without a bus, and not with a text that isn't UTF-8 or holds a NUL, a null value,
    /// or a `userInfo` of more than 64 MiB.
    bool postNotificationName(std::string name, Value object, std::optional<ValueDictionary> userInfo);

    /// Calls `block` on `queue` for every notification of that name, whatever its object, until the last
    /// reference to the result goes; one that is under way then may still come. Null
    /// pointer for an empty block and for a name that can't be listened for.
    [[nodiscard]] std::shared_ptr<void> addObserver(
        const std::string& name, std::shared_ptr<DispatchQueue> queue,
        std::function<void(const NSDistributedNotification&)> block);

  private:
    NSDistributedNotificationCenter() = default;
};

}  // namespace zqcore::platform
