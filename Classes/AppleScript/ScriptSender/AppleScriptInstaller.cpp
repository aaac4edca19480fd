#include "Classes/AppleScript/ScriptSender/AppleScriptInstaller.h"

#include <array>
#include <string_view>
#include <utility>

#include "Classes/AppleScript/CaseName.h"
#include "Classes/Core/Utility/ZQPathFetcher.h"
#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Foundation/NSFileManager.h"
#include "Platform/Foundation/NSPath.h"
#include "Platform/Foundation/NSURL.h"
#include "Platform/Scripting/NSOpenPanel.h"

namespace zqcore {
namespace {

using Status = AppleScriptInstaller::Status;

// One above the level of pop-up menus.
constexpr int kPanelLevel = 102;
constexpr const char* kPanelMessage =
    "⚠️ 请保持选中当前文件夹，并直接点击右下角「确认安装」按钮";
constexpr const char* kPanelPrompt = "确定安装";

bool fileExists(std::string_view path) { return NSFileManager::defaultManager().fileExistsAtPath(path); }

/// A panel may give a path that is still encoded.
std::string withBlanks(std::string_view path) {
    constexpr std::string_view kEncodedBlank = "%20";
    std::string plain;
    plain.reserve(path.size());
    for (std::size_t i = 0; i < path.size(); ++i) {
        const bool encoded = path.substr(i).starts_with(kEncodedBlank);
        plain += encoded ? ' ' : path[i];
        if (encoded) i += kEncodedBlank.size() - 1;
    }
    return plain;
}

std::shared_ptr<NSOpenPanel> panelFor(const NSURL& folder) {
    auto panel = NSOpenPanel::openPanel();
    panel->setLevel(kPanelLevel);
    panel->setDirectoryURL(folder);
    panel->setCanChooseDirectories(true);
    panel->setCanChooseFiles(false);
    panel->setAllowsMultipleSelection(false);
    panel->setMessage(kPanelMessage);
    panel->setPrompt(kPanelPrompt);
    return panel;
}

}  // namespace

AppleScriptInstaller::AppleScriptInstaller(Private, std::string sourceFilePath, std::string installFileName)
    : sourceFilePath_(std::move(sourceFilePath)), installFileName_(std::move(installFileName)) {}

std::shared_ptr<AppleScriptInstaller> AppleScriptInstaller::make(std::string sourceFilePath,
                                                                 std::optional<std::string> installFileName) {
    auto name = installFileName ? std::move(*installFileName) : lastPathComponent(sourceFilePath);
    return std::make_shared<AppleScriptInstaller>(Private{}, std::move(sourceFilePath), std::move(name));
}

std::optional<std::string> AppleScriptInstaller::installFilePath() const {
    const auto directory = ZQPathFetcher::applicationScriptsDirectory();
    if (!directory) return std::nullopt;
    return stringByAppendingPathComponent(*directory, installFileName_);
}

bool AppleScriptInstaller::isInstalled() const {
    const auto path = installFilePath();
    return path && fileExists(*path);
}

void AppleScriptInstaller::installAppleScript(Completion completion) {
    if (!fileExists(sourceFilePath_)) {
        ZQLogError([&] { return "源文件不存在: " + sourceFilePath_; });
        return callback(Status::sourceFileNotExist, completion);
    }
    const auto directory = ZQPathFetcher::applicationScriptsDirectory();
    if (!directory) {
        ZQLogError("未找到脚本文件夹");
        return callback(Status::installPathNotFound, completion);
    }
    const bool exists = fileExists(*directory);
    if (!exists) ZQLogInfo("脚本文件夹不存在，需要手动创建");
    const auto folder =
        NSURL::fileURLWithPath(exists ? *directory : stringByDeletingLastPathComponent(*directory));
    ZQLogInfo([&] { return "授权文件夹：" + folder.description(); });

    auto panel = panelFor(folder);
    // The panel holds itself, and its handler, until it has ended.
    panel->beginWithCompletionHandler([weakSelf = weak_from_this(), weakPanel = std::weak_ptr(panel),
                                       completion = std::move(completion), folder = folder.path(),
                                       exists](NSModalResponse response) {
        const auto self = weakSelf.lock();
        const auto ended = weakPanel.lock();
        if (!self || !ended) return;
        const auto status =
            response == NSModalResponseOK ? self->install(*ended, folder, exists) : Status::userCancel;
        self->callback(status, completion);
    });
}

Status AppleScriptInstaller::install(const NSOpenPanel& panel, const std::string& folder,
                                     bool directoryExisted) const {
    const auto& chosen = panel.URL();
    if (!chosen || withBlanks(chosen->path()) != withBlanks(folder)) {
        ZQLogError([&] { return "用户切换了脚本文件夹：" + (chosen ? chosen->description() : "(null)"); });
        return Status::userChangeDirectory;
    }
    const auto directory = ZQPathFetcher::applicationScriptsDirectory();
    if (!directory) {
        ZQLogError("未找到目标文件路径");
        return Status::installPathNotFound;
    }
    const auto target = stringByAppendingPathComponent(*directory, installFileName_);
    if (!fileExists(sourceFilePath_)) {
        ZQLogError("源文件不存在");
        return Status::sourceFileNotExist;
    }
    const auto& manager = NSFileManager::defaultManager();
    if (!directoryExisted && !fileExists(*directory)) {
        if (const auto made =
                manager.createDirectoryAtPath(*directory, /*withIntermediateDirectories=*/false);
            !made) {
            ZQLogError([&] { return "创建脚本文件夹失败: " + made.error().description(); });
            return Status::createScriptDirectoryFail;
        }
        ZQLogInfo([&] { return "创建脚本文件夹成功: " + *directory; });
    }
    (void)manager.removeItemAtPath(target);
    if (const auto copied = manager.copyItemAtPath(sourceFilePath_, target); !copied) {
        ZQLogError([&] { return "安装脚本失败: " + copied.error().description(); });
        return Status::copyFail;
    }
    ZQLogInfo([&] { return "安装脚本完成: " + target; });
    return Status::success;
}

void AppleScriptInstaller::callback(Status status, const Completion& completion) const {
    const bool installed = isInstalled();
    ZQLogInfo([&] {
        return "脚本安装回调：status=" + std::string(caseName(status)) +
               "; isInstalled=" + (installed ? "true" : "false");
    });
    if (completion) completion(installed ? Status::success : status);
}

std::string_view caseName(AppleScriptInstaller::Status status) noexcept {
    static constexpr std::array<std::string_view, 7> kNames{"userCancel",
                                                            "userChangeDirectory",
                                                            "sourceFileNotExist",
                                                            "installPathNotFound",
                                                            "createScriptDirectoryFail",
                                                            "copyFail",
                                                            "success"};
    return caseNameIn(kNames, status);
}

}  // namespace zqcore
