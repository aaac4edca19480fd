#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore::platform {
class NSOpenPanel;
}  // namespace zqcore::platform

namespace zqcore {

/// Puts a script into the application's script directory, which takes the user's consent: an open panel that
/// is pointed at the folder. Threads: main thread; `installFilePath` and `isInstalled` from any.
/// Lifetime: the caller keeps the installer while a panel is open; if it goes, the completion never comes.
/// Failure: a status; an already installed script turns every one of them into `success`.
class ZQ_EXPORT AppleScriptInstaller final : public std::enable_shared_from_this<AppleScriptInstaller> {
    struct Private {};

  public:
    enum class Status {
        userCancel,                 ///< the panel was closed without confirming
        userChangeDirectory,        ///< another folder than the proposed one was confirmed
        sourceFileNotExist,         ///< there is nothing to install
        installPathNotFound,        ///< the system gives no script directory
        createScriptDirectoryFail,  ///< the missing script directory could not be made
        copyFail,
        success,
    };
    using Completion = std::function<void(Status)>;

    AppleScriptInstaller(Private, std::string sourceFilePath, std::string installFileName);

    /// An installer for the script at `sourceFilePath`, under the name of that file unless another is given.
    [[nodiscard]] static std::shared_ptr<AppleScriptInstaller> make(
        std::string sourceFilePath, std::optional<std::string> installFileName = std::nullopt);

    [[nodiscard]] const std::string& sourceFilePath() const noexcept { return sourceFilePath_; }
    [[nodiscard]] const std::string& installFileName() const noexcept { return installFileName_; }
    /// Where the script lies once it is installed; absent without a script directory.
    [[nodiscard]] std::optional<std::string> installFilePath() const;
    /// Whether a file is there, whatever it holds.
    [[nodiscard]] bool isInstalled() const;

    /// Asks the user and installs, in place of a file that is there already. `completion` runs on the main
    /// thread: inside the call if there is nothing to install or nowhere to put it, else when the panel ends.
    void installAppleScript(Completion completion);

  private:
    [[nodiscard]] Status install(const NSOpenPanel& panel, const std::string& folder,
                                 bool directoryExisted) const;
    void callback(Status status, const Completion& completion) const;

    std::string sourceFilePath_;
    std::string installFileName_;
};

/// The name of the case, as log lines carry it.
[[nodiscard]] ZQ_EXPORT std::string_view caseName(AppleScriptInstaller::Status status) noexcept;

}  // namespace zqcore
