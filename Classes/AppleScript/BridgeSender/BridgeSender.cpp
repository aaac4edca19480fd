#include "Classes/AppleScript/BridgeSender/BridgeSender.h"

#include <array>
#include <memory>
#include <optional>
#include <utility>

#include "Classes/AppleScript/BridgeSender/BridgeApplication.h"
#include "Classes/AppleScript/BridgeSender/BridgeDelegateHandler.h"
#include "Classes/AppleScript/CaseName.h"
#include "Classes/AppleScript/RequestCommand/ASAnswerVerdict.h"
#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Dispatch/DispatchQueue.h"

namespace zqcore {
namespace {

using Status = BridgeSender::Status;

constexpr long kNotPermitted = -1743;

/// One request on its way.
class BridgeCall final : public std::enable_shared_from_this<BridgeCall> {
  public:
    BridgeCall(std::string appId, ASRequestCarrier request, std::function<void(Status)> completion)
        : appId_(std::move(appId)), request_(std::move(request)), completion_(std::move(completion)) {}

    void run() {
        const auto application = SBApplication::make(appId_);
        if (!application) return callback(Status::notInstalled);
        const auto delegate = makeObject<BridgeDelegateHandler>();
        delegate->eventDidFailClosure = [this](const NSError& error) { eventDidFail(error); };
        application->setDelegate(delegate);

        requestString_ = request_.encode();
        if (!requestString_) return callback(Status::encodeRequestFail);
        if (!application->isRunning()) application->activate();
        if (!application->respondsToSelector("request:")) return callback(Status::notSupportRequest);
        responseString_ = application->request(*requestString_);
        // Also after a failed event, whose own status has been reported by then and stands.
        if (!responseString_) return callback(Status::notSupportRequest);
        callback(judge(*responseString_));
    }

  private:
    void eventDidFail(const NSError& error) {
        ZQLogError([&] { return "调用 app 报错：error=" + error.description(); });
        callback(error.code() == kNotPermitted ? Status::appleScriptPermission : Status::fail);
    }

    [[nodiscard]] Status judge(const std::string& json) const {
        switch (fillAndJudge(request_, json)) {
            case ASAnswerVerdict::decodeResponseFail:
                return Status::decodeResponseFail;
            case ASAnswerVerdict::notReachMinimumVersion:
                return Status::notReachMinimumVersion;
            case ASAnswerVerdict::success:
                break;
        }
        return Status::success;
    }

    void callback(Status status) {
        ZQLogInfo(
            [&] { return request_.description(appId_, caseName(status), requestString_, responseString_); });
        DispatchQueue::main()->async([self = shared_from_this(), status] {
            // Only ever touched on the main queue.
            if (std::exchange(self->called_, true)) return;
            std::exchange(self->completion_, nullptr)(status);
        });
    }

    const std::string appId_;
    const ASRequestCarrier request_;
    std::optional<std::string> requestString_;
    std::optional<std::string> responseString_;
    std::function<void(Status)> completion_;
    bool called_ = false;
};

}  // namespace

void BridgeSender::send(ASRequestCarrier request, std::function<void(Status)> completion) const {
    request.prepare();
    auto call = std::make_shared<BridgeCall>(appId_, std::move(request), std::move(completion));
    DispatchQueue::global(DispatchQoS::userInitiated)->async([call = std::move(call)] { call->run(); });
}

std::string_view caseName(BridgeSender::Status status) noexcept {
    static constexpr std::array<std::string_view, 8> kNames{"success",
                                                            "fail",
                                                            "notInstalled",
                                                            "encodeRequestFail",
                                                            "notSupportRequest",
                                                            "appleScriptPermission",
                                                            "decodeResponseFail",
                                                            "notReachMinimumVersion"};
    return caseNameIn(kNames, status);
}

}  // namespace zqcore
