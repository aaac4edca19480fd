#include "Classes/AppleScript/ScriptSender/AppleScriptInstaller.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/RunLoop.h"
#include "Platform/Foundation/NSSearchPath.h"
#include "Platform/Scripting/CommandLineOpenPanel.h"
#include "TestKit/FakeBundle.h"
#include "TestKit/LogCapture.h"
#include "TestKit/ScratchFolder.h"
#include "TestKit/ScriptedOpenPanel.h"
#include "Tests/Classes/AppleScript/StatusCases.h"

namespace zqcore {
namespace {

using Status = AppleScriptInstaller::Status;
using testkit::LogCapture;
using testkit::ScratchFolder;
using testkit::ScriptedOpenPanel;

TEST(AppleScriptInstallerStatusTest, EveryCaseHasItsNumberAndItsName) {
    expectCases<Status>({
        {Status::userCancel, "userCancel"},
        {Status::userChangeDirectory, "userChangeDirectory"},
        {Status::sourceFileNotExist, "sourceFileNotExist"},
        {Status::installPathNotFound, "installPathNotFound"},
        {Status::createScriptDirectoryFail, "createScriptDirectoryFail"},
        {Status::copyFail, "copyFail"},
        {Status::success, "success"},
    });
}

class AppleScriptInstallerTest : public testing::Test {
  protected:
    /// Installs and waits for the completion, with nothing else on the main queue.
    std::vector<Status> install() {
        statuses_.clear();
        installer_->installAppleScript([this](Status status) {
            EXPECT_TRUE(isMainThread());
            statuses_.push_back(status);
        });
        settle();
        return statuses_;
    }
    void settle() {
        while (RunLoop::main().drain()) {
        }
    }
    [[nodiscard]] std::string slashed(const std::string& path) const {
        return NSURL::fileURLWithPath(path).description();
    }

    ScratchFolder folder_;
    std::string source_ = folder_.write("source/My Script.scpt", "#!/bin/sh\necho new\n", 0755);
    std::string parent_ = folder_ / "Application Scripts";
    std::string directory_ = parent_ + "/com.example.app";
    std::string target_ = directory_ + "/My Script.scpt";
    testkit::FakeSearchPaths home_{"/home/tester", {{NSSearchPathDirectory::applicationScripts, directory_}}};
    ScriptedOpenPanel panel_;
    LogCapture log_;
    std::shared_ptr<AppleScriptInstaller> installer_ = AppleScriptInstaller::make(source_);
    std::vector<Status> statuses_;
};

using Statuses = std::vector<Status>;
using Lines = std::vector<std::string>;

TEST_F(AppleScriptInstallerTest, MakesTheMissingFolderAndInstallsThere) {
    std::filesystem::create_directory(parent_);
    panel_.confirmFolderShown();
    EXPECT_EQ(install(), Statuses{Status::success});
    EXPECT_EQ(testkit::contentOf(target_), "#!/bin/sh\necho new\n");
    EXPECT_EQ(::access(target_.c_str(), X_OK), 0) << "it has to stay executable";
    EXPECT_EQ(log_.messages(), (Lines{"脚本文件夹不存在，需要手动创建", "授权文件夹：" + slashed(parent_),
                                      "创建脚本文件夹成功: " + directory_, "安装脚本完成: " + target_,
                                      "脚本安装回调：status=success; isInstalled=true"}));
    EXPECT_EQ(log_.messages(LogCapture::error), Lines{});
}

TEST_F(AppleScriptInstallerTest, AsksWithTheTextsAndSettingsOfThePanel) {
    std::filesystem::create_directories(directory_);
    (void)install();
    ASSERT_EQ(panel_.shown().size(), 1U);
    const auto& shown = panel_.shown().front();
    EXPECT_EQ(shown.level, 102);
    EXPECT_EQ(shown.directoryURL->path(), directory_);
    EXPECT_TRUE(shown.canChooseDirectories);
    EXPECT_FALSE(shown.canChooseFiles);
    EXPECT_FALSE(shown.allowsMultipleSelection);
    EXPECT_EQ(shown.message,
              "⚠️ 请保持选中当前文件夹，并直接点击右下角「确认安装」按钮");
    EXPECT_EQ(shown.prompt, "确定安装");
}

TEST_F(AppleScriptInstallerTest, AHomeWithoutAnyScriptsStillWorks) {
    panel_.confirmFolderShown();
    EXPECT_EQ(install(), Statuses{Status::success}) << "even the folder above is missing";
}

TEST_F(AppleScriptInstallerTest, ReplacesWhatIsThere) {
    std::filesystem::create_directories(target_ + "/folder in the way");
    panel_.confirmFolderShown();
    EXPECT_TRUE(installer_->isInstalled()) << "existence is all that counts";
    EXPECT_EQ(install(), Statuses{Status::success});
    EXPECT_EQ(testkit::contentOf(target_), "#!/bin/sh\necho new\n");
}

TEST_F(AppleScriptInstallerTest, ACancelFailsOnlyIfNothingIsInstalled) {
    std::filesystem::create_directories(directory_);
    panel_.cancel();
    EXPECT_EQ(install(), Statuses{Status::userCancel});
    EXPECT_EQ(log_.messages().back(), "脚本安装回调：status=userCancel; isInstalled=false");
    folder_.write("Application Scripts/com.example.app/My Script.scpt", "old");
    EXPECT_EQ(install(), Statuses{Status::success});
    EXPECT_EQ(log_.messages().back(), "脚本安装回调：status=userCancel; isInstalled=true");
    EXPECT_EQ(testkit::contentOf(target_), "old");
}

TEST_F(AppleScriptInstallerTest, AnotherFolderIsRefused) {
    std::filesystem::create_directories(directory_);
    panel_.choose(NSURL::fileURLWithPath(folder_.path()));
    EXPECT_EQ(install(), Statuses{Status::userChangeDirectory});
    EXPECT_TRUE(log_.has(LogCapture::error, "用户切换了脚本文件夹：" + slashed(folder_.path()))) << log_;
    EXPECT_FALSE(installer_->isInstalled());
}

TEST_F(AppleScriptInstallerTest, AnEncodedBlankCountsAsABlank) {
    std::filesystem::create_directories(directory_);
    auto encoded = directory_;
    encoded.replace(encoded.find(' '), 1, "%20");
    panel_.choose(NSURL::fileURLWithPath(encoded));
    EXPECT_EQ(install(), Statuses{Status::success});
}

TEST_F(AppleScriptInstallerTest, NothingToInstallIsToldAtOnce) {
    std::filesystem::remove(source_);
    installer_->installAppleScript([this](Status status) { statuses_.push_back(status); });
    EXPECT_EQ(statuses_, Statuses{Status::sourceFileNotExist}) << "inside the call";
    EXPECT_TRUE(log_.has(LogCapture::error, "源文件不存在: " + source_)) << log_;
    EXPECT_TRUE(panel_.shown().empty());
}

TEST_F(AppleScriptInstallerTest, NowhereToInstallIsToldAtOnce) {
    home_.setFolder(NSSearchPathDirectory::applicationScripts, "");
    EXPECT_EQ(installer_->installFilePath(), std::nullopt);
    EXPECT_FALSE(installer_->isInstalled());
    EXPECT_EQ(install(), Statuses{Status::installPathNotFound});
    EXPECT_TRUE(log_.has(LogCapture::error, "未找到脚本文件夹")) << log_;
    EXPECT_TRUE(panel_.shown().empty());
}

TEST_F(AppleScriptInstallerTest, TheWorldMayChangeWhileThePanelIsOpen) {
    const struct {
        std::function<void()> change;
        Status status;
        const char* line;
    } cases[] = {
        {[&] { home_.setFolder(NSSearchPathDirectory::applicationScripts, ""); }, Status::installPathNotFound,
         "未找到目标文件路径"},
        {[&] { std::filesystem::remove(source_); }, Status::sourceFileNotExist, "源文件不存在"},
        {[&] { std::filesystem::remove_all(parent_); }, Status::createScriptDirectoryFail,
         "创建脚本文件夹失败: "},
        {[&] { folder_.write("Application Scripts/com.example.app", "a file"); }, Status::copyFail,
         "安装脚本失败: "},
    };
    for (const auto& [change, status, line] : cases) {
        home_.setFolder(NSSearchPathDirectory::applicationScripts, directory_);
        folder_.write("source/My Script.scpt", "x");
        std::filesystem::remove_all(parent_);
        log_.clear();
        EXPECT_EQ(install(), Statuses{}) << "the panel is open";
        change();
        panel_.end(panel_.shown().back().directoryURL);
        settle();
        EXPECT_EQ(statuses_, Statuses{status});
        const auto errors = log_.messages(LogCapture::error);
        ASSERT_EQ(errors.size(), 1U) << log_;
        EXPECT_TRUE(errors[0].starts_with(line)) << errors[0];
    }
}

TEST_F(AppleScriptInstallerTest, AFolderThatWentWhileThePanelIsOpenIsNotMadeAgain) {
    std::filesystem::create_directories(directory_);
    EXPECT_EQ(install(), Statuses{}) << "the panel is open";
    std::filesystem::remove_all(directory_);
    panel_.end(panel_.shown().back().directoryURL);
    settle();
    EXPECT_EQ(statuses_, Statuses{Status::copyFail});
    EXPECT_FALSE(std::filesystem::exists(directory_));
}

TEST_F(AppleScriptInstallerTest, AnInstallerThatIsGoneSaysNothing) {
    std::filesystem::create_directories(directory_);
    EXPECT_EQ(install(), Statuses{});
    log_.clear();
    installer_.reset();
    panel_.end(panel_.shown().back().directoryURL);
    settle();
    EXPECT_EQ(statuses_, Statuses{});
    EXPECT_TRUE(log_.silent()) << log_;
    EXPECT_FALSE(std::filesystem::exists(target_));
}

TEST_F(AppleScriptInstallerTest, TheFileMayGetANameOfItsOwn) {
    installer_ = AppleScriptInstaller::make(source_, "other.scpt");
    panel_.confirmFolderShown();
    EXPECT_EQ(install(), Statuses{Status::success});
    EXPECT_EQ(installer_->installFilePath(), directory_ + "/other.scpt");
    EXPECT_TRUE(std::filesystem::exists(directory_ + "/other.scpt"));
}

TEST_F(AppleScriptInstallerTest, TheCommandLineAsksAndReadsTheAnswer) {
    const struct {
        const char* input;
        bool assumeYes;
        Status status;
    } cases[] = {
        {"y\n", false, Status::success},
        {"what?\n  yes \r\n", false, Status::success},
        {"n\n", false, Status::userCancel},
        {"", false, Status::userCancel},
        {"/tmp\n", false, Status::userChangeDirectory},
        {"", true, Status::success},
    };
    for (const auto& [input, assumeYes, status] : cases) {
        std::filesystem::remove_all(parent_);
        std::array<int, 2> typed{};
        std::array<int, 2> printed{};
        ASSERT_EQ(::pipe2(typed.data(), O_CLOEXEC) | ::pipe2(printed.data(), O_CLOEXEC), 0);
        ASSERT_EQ(::write(typed[1], input, std::string_view(input).size()),
                  static_cast<ssize_t>(std::string_view(input).size()));
        ::close(typed[1]);
        NSOpenPanel::installPresenter(
            std::make_shared<CommandLineOpenPanel>(assumeYes, typed[0], printed[1]));
        (void)install();
        EXPECT_TRUE(RunLoop::main().runUntil([&] { return !statuses_.empty(); }, std::chrono::seconds(30)));
        EXPECT_EQ(statuses_, Statuses{status}) << input;
        std::array<char, 4096> text{};
        const auto got = ::read(printed[0], text.data(), text.size());
        EXPECT_NE(std::string_view(text.data(), static_cast<std::size_t>(got)).find(parent_ + "\n"),
                  std::string_view::npos);
        for (const int end : {typed[0], printed[0], printed[1]}) ::close(end);
    }
}

}  // namespace
}  // namespace zqcore
