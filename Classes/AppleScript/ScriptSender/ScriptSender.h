#pragma once

#include <concepts>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "Classes/AppleScript/RequestCommand/ASRequestCarrier.h"
#include "Classes/AppleScript/ScriptSender/AppleScriptInstaller.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {
class NSUserAppleScriptTask;
}  // namespace zqcore::platform

namespace zqcore {

/// Carries requests to another application through the script that the user has installed by
/// `scriptInstaller()`, and brings the responses back.
///
///     ScriptSender sender("com.example.server");
///     sender.request(CommonInfoRequest::make(), [](auto status, const auto& request) { ... });
///
/// Time: no limit but the script's own. Threads: any; checks and encoding are done on the caller's, the
/// completion runs on the main queue, never inside the call. Lifetime: a request under way needs no sender;
/// one sender carries any number at once. Failure: exactly one completion with the status that tells it.
class ZQ_EXPORT ScriptSender final {
  public:
    enum class Status {
        success,                  ///< a response came; its own `error` may still tell that the request failed
        fail,                     ///< the script failed or gave no text
        notInstalledApp,          ///< nobody knows the application
        notInstalledAppleScript,  ///< the script isn't in the script directory
        initializationFailed,     ///< the script can't be run
        encodeRequestFail,        ///< the request can't be written as JSON
        appleScriptPermission,    ///< the system or the application refused this caller
        decodeResponseFail,       ///< what came is no response of this request
        notReachMinimumVersion,   ///< an error from an application older than the request's `minVersion`
    };

    /// `appId` is the bundle identifier of the application addressed. A library bundle without its script
    /// leaves an installer that reports a missing source file.
    explicit ScriptSender(std::string appId);

    [[nodiscard]] const std::string& appId() const noexcept { return appId_; }
    [[nodiscard]] const std::shared_ptr<AppleScriptInstaller>& scriptInstaller() const noexcept {
        return scriptInstaller_;
    }
    /// Whether the system knows the application; starts nothing.
    [[nodiscard]] bool isAppInstalled() const;

    /// Sends `request`, and gives it back with its `responseValue` filled in on success. An empty completion
    /// is none.
    template <ASRequest R, std::invocable<Status, const std::shared_ptr<R>&> Completion>
    void request(std::shared_ptr<R> request, Completion completion) const {
        ASRequestCarrier carrier(request);
        send(std::move(carrier),
             [request = std::move(request), completion = std::move(completion)](Status status) mutable {
                 // A function object may hold nothing; a plain lambda can't.
                 if constexpr (std::constructible_from<Completion, std::nullptr_t>) {
                     if (completion == nullptr) return;
                 }
                 completion(status, request);
             });
    }

  private:
    void send(ASRequestCarrier request, std::move_only_function<void(Status)> completion) const;
    [[nodiscard]] std::shared_ptr<NSUserAppleScriptTask> generateAppleScriptTask() const;

    std::string appId_;
    std::shared_ptr<AppleScriptInstaller> scriptInstaller_;
};

/// The name of the case, as log lines carry it.
[[nodiscard]] ZQ_EXPORT std::string_view caseName(ScriptSender::Status status) noexcept;

}  // namespace zqcore
