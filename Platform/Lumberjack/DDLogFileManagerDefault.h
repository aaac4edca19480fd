#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Base/Date.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// One log file as it lies on disk.
struct DDLogFileInfo {
    std::string path;
    /// The date in its name, else the file's own date of creation.
    Date creationDate{};
    std::uint64_t fileSize = 0;
    /// Closed for good: never written again, and free to be deleted.
    bool isArchived = false;
    /// 1, or the number behind the date of a name that was taken.
    int ordinal = 1;
};

/// Names the log files of one directory and keeps their count and size within limits. A log file is named
/// NAME, blank, "yyyy-MM-dd--HH-mm-ss-SSS" (UTC), ".log", with " 2", " 3" and so on before the end if that is
/// taken; nothing else in the directory is ever touched. The newest file that is not archived may be being
/// written: it counts as the newest of all and is never deleted. The mark of an archived file is its extended
/// attribute "user.lumberjack.log.archived". Threads: any. Lifetime: held by `std::shared_ptr`. Failure: what
/// can't be read counts as not there.
class ZQ_EXPORT DDLogFileManagerDefault final : public std::enable_shared_from_this<DDLogFileManagerDefault> {
  public:
    /// `applicationName` is the NAME of the files. An absent directory is Logs/NAME in the user's caches.
    [[nodiscard]] static std::shared_ptr<DDLogFileManagerDefault> make(
        std::optional<std::string> logsDirectory, std::string applicationName);

    [[nodiscard]] const std::string& logsDirectory() const noexcept { return directory_; }
    /// Initially 5; 0 is no limit. A change starts a clean-up, which also makes the directory.
    void setMaximumNumberOfLogFiles(std::uint64_t count);
    [[nodiscard]] std::uint64_t maximumNumberOfLogFiles() const noexcept { return maximumCount_; }
    /// In bytes; initially 20 MiB, 0 is no limit. A change starts a clean-up.
    void setLogFilesDiskQuota(std::uint64_t bytes);
    [[nodiscard]] std::uint64_t logFilesDiskQuota() const noexcept { return quota_; }

    /// The log files, newest first.
    [[nodiscard]] std::vector<DDLogFileInfo> sortedLogFileInfos() const;

    /// A new empty file, named by the clock, with its descriptor, which is the caller's. Starts a clean-up.
    struct NewFile {
        int descriptor;
        DDLogFileInfo info;
    };
    [[nodiscard]] std::optional<NewFile> createNewLogFile();
    void markArchived(const std::string& path);

  private:
    DDLogFileManagerDefault(std::string logsDirectory, std::string applicationName);

    void startCleanUp();
    void cleanUp();
    [[nodiscard]] std::optional<DDLogFileInfo> infoOf(std::string_view name) const;
    [[nodiscard]] bool isArchived(const std::string& path) const;

    const std::string directory_;
    const std::string prefix_;
    std::atomic<std::uint64_t> maximumCount_{5};
    std::atomic<std::uint64_t> quota_{20 * 1024 * 1024};
    // Marks that the file system couldn't keep.
    mutable std::mutex mutex_;
    std::set<std::string> archived_;
};

}  // namespace zqcore::platform
