#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "Classes/AppleScript/RequestCommand/ASRequestCarrier.h"
#include "Platform/Base/Export.h"

namespace zqcore {

/// Carries a typed request straight to another application's command `request:` and brings the response back.
/// Time: a target answers within 60 seconds; the call itself gives up after 120. One that has to be started
/// or asked for its commands first has 120 seconds for that too, and if it fails there no call is sent.
/// Threads: `request` from any; each request takes a thread of the global user-initiated queue for the length
/// of its call, so requests don't wait for each other. Lifetime: a sender may go as soon as it has been
/// called; the request lives until its completion. Failure: one `Status`, and an info line for every outcome;
/// nothing is retried.
///
///     const BridgeSender orbel("com.tessaradev.Orbel");
///     orbel.request(CommonInfoRequest::make(), [](auto status, const auto& info) {
///         if (status == BridgeSender::Status::success) show(*info->responseValue->server);
///     });
class ZQ_EXPORT BridgeSender final {
  public:
    enum class Status {
        success = 0,                 ///< a response came back and decoded, be it one with an `error`
        fail = 1,                    ///< the event failed
        notInstalled = 2,            ///< there is no such application
        encodeRequestFail = 3,       ///< the request value can't be written as JSON
        notSupportRequest = 4,       ///< the target has no `request:`, or it gave no result
        appleScriptPermission = 5,   ///< the user hasn't allowed it (-1743)
        decodeResponseFail = 6,      ///< the text that came back is no response of this request
        notReachMinimumVersion = 7,  ///< an error from a target below the request's `minVersion`
    };

    explicit BridgeSender(std::string appId) : appId_(std::move(appId)) {}

    /// The target's bundle identifier.
    [[nodiscard]] const std::string& appId() const noexcept { return appId_; }

    /// Sends `request` and calls `completion` once, on the main queue, with the first status that is
    /// reported. On success `request->responseValue` holds the response. The request's value is prepared on
    /// the calling thread and then left to the sender until the completion.
    template <ASRequest R>
    void request(
        std::shared_ptr<R> request,
        std::type_identity_t<std::function<void(Status, const std::shared_ptr<R>&)>> completion) const {
        ASRequestCarrier carrier(request);
        send(std::move(carrier),
             [request = std::move(request), completion = std::move(completion)](Status status) {
                 if (completion) completion(status, request);
             });
    }

  private:
    void send(ASRequestCarrier request, std::function<void(Status)> completion) const;

    std::string appId_;
};

/// The name of the case, as log lines carry it.
[[nodiscard]] ZQ_EXPORT std::string_view caseName(BridgeSender::Status status) noexcept;

}  // namespace zqcore
