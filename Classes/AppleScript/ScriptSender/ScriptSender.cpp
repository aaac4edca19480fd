#include "Classes/AppleScript/ScriptSender/ScriptSender.h"

#include <array>
#include <optional>
#include <string_view>

#include "Classes/AppleScript/CaseName.h"
#include "Classes/AppleScript/RequestCommand/ASAnswerVerdict.h"
#include "Classes/Bundle/ZQCoreBundle.h"
#include "Classes/Core/Extension/NSAppleEventDescriptorExtension.h"
#include "Classes/Core/Utility/ZQPathFetcher.h"
#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Foundation/NSBundle.h"
#include "Platform/Foundation/NSPath.h"
#include "Platform/Scripting/NSUserAppleScriptTask.h"
#include "Platform/Scripting/NSWorkspace.h"

namespace zqcore {
namespace {

using Status = ScriptSender::Status;

constexpr const char* kFunctionName = "send";
constexpr const char* kScriptName = "SendRequestChannel";
constexpr const char* kScriptExtension = "scpt";

std::shared_ptr<AppleScriptInstaller> makeInstaller() {
    std::optional<std::string> source;
    if (const auto bundle = ZQCoreBundle::bundle())
        source = bundle->pathForResource(kScriptName, kScriptExtension);
    if (source) return AppleScriptInstaller::make(std::move(*source));
    return AppleScriptInstaller::make("", std::string(kScriptName) + "." + kScriptExtension);
}

/// One request under way. The texts are written on one thread at a time: the caller's, then the script's.
struct Errand {
    std::string appId;
    ASRequestCarrier request;
    std::move_only_function<void(Status)> completion;
    std::optional<std::string> requestString;
    std::optional<std::string> responseString;

    void callback(Status status) {
        ZQLogInfo(
            [&] { return request.description(appId, caseName(status), requestString, responseString); });
        DispatchQueue::main()->async(
            [status, completion = std::move(completion)]() mutable { completion(status); });
    }

    void answer(const std::shared_ptr<NSAppleEventDescriptor>& result, const std::optional<NSError>& error) {
        if (error) {
            ZQLogInfo([&] { return "调用 AppleScript 报错：" + error->description(); });
            return callback(error->code() == kScriptErrorNotPermitted ? Status::appleScriptPermission
                                                                      : Status::fail);
        }
        auto text = result ? result->stringValue() : std::nullopt;
        if (!text || text->empty()) return callback(Status::fail);
        responseString = std::move(text);
        switch (fillAndJudge(request, *responseString)) {
            case ASAnswerVerdict::success:
                return callback(Status::success);
            case ASAnswerVerdict::decodeResponseFail:
                return callback(Status::decodeResponseFail);
            case ASAnswerVerdict::notReachMinimumVersion:
                return callback(Status::notReachMinimumVersion);
        }
    }
};

}  // namespace

ScriptSender::ScriptSender(std::string appId) : appId_(std::move(appId)), scriptInstaller_(makeInstaller()) {}

bool ScriptSender::isAppInstalled() const {
    return NSWorkspace::shared().URLForApplicationWithBundleIdentifier(appId_).has_value();
}

void ScriptSender::send(ASRequestCarrier request, std::move_only_function<void(Status)> completion) const {
    request.prepare();
    auto errand = std::make_shared<Errand>(Errand{appId_, std::move(request), std::move(completion), {}, {}});
    if (!isAppInstalled()) return errand->callback(Status::notInstalledApp);
    if (!scriptInstaller_->isInstalled()) return errand->callback(Status::notInstalledAppleScript);
    const auto task = generateAppleScriptTask();
    if (!task) return errand->callback(Status::initializationFailed);
    errand->requestString = errand->request.encode();
    if (!errand->requestString) return errand->callback(Status::encodeRequestFail);

    const auto event = zq_eventDescriptior(
        kFunctionName, {NSAppleEventDescriptor::descriptorWithString(appId_),
                        NSAppleEventDescriptor::descriptorWithString(*errand->requestString)});
    task->executeWithAppleEvent(
        event, [errand](const auto& result, const auto& error) { errand->answer(result, error); });
}

std::shared_ptr<NSUserAppleScriptTask> ScriptSender::generateAppleScriptTask() const {
    const auto directory = ZQPathFetcher::applicationScriptsDirectory();
    if (!directory) return nullptr;
    const auto path = stringByAppendingPathComponent(*directory, scriptInstaller_->installFileName());
    auto task = NSUserAppleScriptTask::make(NSURL::fileURLWithPath(path));
    if (!task) {
        ZQLogError([&] { return "初始化 apple script 任务失败：" + task.error().description(); });
        return nullptr;
    }
    return std::move(*task);
}

std::string_view caseName(ScriptSender::Status status) noexcept {
    static constexpr std::array<std::string_view, 9> kNames{"success",
                                                            "fail",
                                                            "notInstalledApp",
                                                            "notInstalledAppleScript",
                                                            "initializationFailed",
                                                            "encodeRequestFail",
                                                            "appleScriptPermission",
                                                            "decodeResponseFail",
                                                            "notReachMinimumVersion"};
    return caseNameIn(kNames, status);
}

}  // namespace zqcore
