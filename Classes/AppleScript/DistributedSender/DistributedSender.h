#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Classes/AppleScript/RequestCommand/ASRequestCarrier.h"
#include "Platform/Base/Export.h"
#include "Platform/Combine/AnyCancellable.h"
#include "Platform/Dispatch/DispatchQueue.h"

namespace zqcore::platform {
struct NSDistributedNotification;
}  // namespace zqcore::platform

namespace zqcore {

/// Broadcasts a typed request to every process that listens. There is no answer and no report: the request's
/// `responseValue` stays empty. Threads: `post` and `handle` work on the caller's; a post waits for the bus
/// only while the connection is new or its socket full. Notifications arrive one at a time on the serial
/// queue "com.tessara.distributed.queue", and the post handler runs there too. Lifetime: the one sender
/// lives, and listens, from its first use to the end of the process. Failure: silent; a malformed
/// notification is dropped, and a handler that throws is told in the log.
class ZQ_EXPORT DistributedSender final : public std::enable_shared_from_this<DistributedSender> {
  public:
    /// Takes a request's path and its JSON text.
    using PostHandler = std::function<void(const std::string& path, const std::string& json)>;

    /// The name of the notification: its object is the sender's identifier, its user information the
    /// request's JSON text under "request".
    static constexpr std::string_view kPostNotification = "com.tessara.distributed.channel.post";

    /// The shared sender (`default`). Its first use starts the listening, so a process that wants to receive
    /// uses it at its start.
    [[nodiscard]] static const std::shared_ptr<DistributedSender>& defaultSender();

    /// Sets the application's receiver, in place of an earlier one. Notifications that come without one are
    /// logged and dropped.
    void injectPostHandler(PostHandler handler);

    /// Prepares `request` and sends it to everyone. Does nothing at all in a sandboxed process.
    template <ASRequest R>
    void post(const std::shared_ptr<R>& request) const {
        static_cast<void>(tryPost(request));
    }
    /// The same, and gives whether the bus took it: for whoever reports to a person. Not from a sandboxed
    /// process, nor without a bus, nor with a request that can't be written or is too large for a
    /// notification. Whether anyone heard it nobody knows.
    template <ASRequest R>
    [[nodiscard]] bool tryPost(const std::shared_ptr<R>& request) const {
        return tryPost(ASRequestCarrier(request));
    }

    /// Decodes `json` for `H` and has it handle the request on this thread; a response is dropped. For the
    /// post handler, once it knows the type that belongs to a path.
    template <ASRequestHandler H>
    void handle(const std::string& json) const {
        const auto value = H::RequestValue::fromJSONString(json);
        if (value) callHandler([&] { H::handle(value, ASCompletion([](const auto&) {})); });
    }

  private:
    DistributedSender();
    void listen();
    static void callHandler(const std::function<void()>& call);
    [[nodiscard]] bool tryPost(const ASRequestCarrier& request) const;
    void receive(const NSDistributedNotification& notification);
    void handlePostNotification(const NSDistributedNotification& notification);

    const std::shared_ptr<DispatchQueue> queue_;
    std::vector<AnyCancellable> cancellables_;
    std::mutex mutex_;
    PostHandler postHandler_;
};

}  // namespace zqcore
