#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore {

/// Where things lie on disk. A sandboxed application's own directories are the system's; one that isn't
/// sandboxed has a private tree of the same shape below Application Support. Which of the two is decided
/// once, at the first use. Threads: any. Failure: a directory that the system doesn't know reads as the empty
/// text or as absent; one that can't be made is told by one line on standard output, and its path is given
/// all the same.
class ZQ_EXPORT ZQPathFetcher final {
  public:
    ZQPathFetcher() = delete;

    [[nodiscard]] static std::string bundleDirectory();
    [[nodiscard]] static std::string sandboxDirectory();
    /// The private tree of another application of this user, one that isn't sandboxed. Makes nothing on disk.
    [[nodiscard]] static std::string sandboxDirectory(std::string_view identifier);
    [[nodiscard]] static std::string documentsDirectory();
    [[nodiscard]] static std::string libraryDirectory();
    [[nodiscard]] static std::string cachesDirectory();
    [[nodiscard]] static std::string temporaryDirectory();
    /// The application's settings file, always below the system's own Library directory. Worked out once.
    [[nodiscard]] static std::string userDefaultsPlistFilePath();
    /// The script directory in the home of the user who runs the process.
    [[nodiscard]] static std::optional<std::string> applicationScriptsDirectory();
    /// The script directory as the system gives it.
    [[nodiscard]] static std::optional<std::string> originalApplicationScriptsDirectory();
    [[nodiscard]] static std::optional<std::string> userName();
    [[nodiscard]] static std::optional<std::string> scriptsDirectoryUserName();
    [[nodiscard]] static std::string applicationSupportDirectory();
    [[nodiscard]] static std::string downloadsDirectory();
    [[nodiscard]] static std::string desktopDirectory();
    // The library's own directories: worked out and made on disk at the first use, once.
    [[nodiscard]] static std::string zqcoreDocumentsDirectory();
    [[nodiscard]] static std::string zqcoreLogsDirectory();
    [[nodiscard]] static std::string zqcoreCachesDirectory();

    /// The user's name in a path of the form /Users/NAME/...; absent for every other path.
    [[nodiscard]] static std::optional<std::string> parseUserName(std::optional<std::string_view> path);

  private:
    class ZQPathFetcherDifferentPath;
    class Sandbox;
    class Virtual;
    static const ZQPathFetcherDifferentPath& fetcher();
};

/// Makes the folder with those above it unless it is there. Gives false, and prints one line on standard
/// output, if a file is in the way or it can't be made. For folders that the logger itself may need. Any
/// thread.
ZQ_EXPORT bool fetcherCreateDirectoryIfNotExist(const std::string& path);

}  // namespace zqcore
