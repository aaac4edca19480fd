#include "Platform/Lumberjack/DDLogFileManagerDefault.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <system_error>
#include <utility>

#include "Platform/Base/Clock.h"
#include "Platform/Foundation/NSSearchPath.h"
#include "Platform/Lumberjack/DDLogDateFormatter.h"
#include "Platform/Lumberjack/Linux/LogQueue.h"

namespace zqcore::platform {

namespace {

constexpr const char* kArchivedAttribute = "user.lumberjack.log.archived";
constexpr std::string_view kSuffix = ".log";
// Log lines may hold what is nobody else's business.
constexpr mode_t kFileMode = 0600;

std::string defaultDirectory(const std::string& applicationName) {
    const auto caches =
        NSSearchPathForDirectoriesInDomains(NSSearchPathDirectory::caches, NSUserDomainMask, true);
    return (caches.empty() ? NSTemporaryDirectory() : caches.front() + '/') + "Logs/" + applicationName;
}

/// The 2 of " 2", else 1.
int ordinalIn(std::string_view text) {
    int ordinal = 1;
    if (text.starts_with(' ')) std::from_chars(text.data() + 1, text.data() + text.size(), ordinal);
    return ordinal;
}

}  // namespace

std::shared_ptr<DDLogFileManagerDefault> DDLogFileManagerDefault::make(
    std::optional<std::string> logsDirectory, std::string applicationName) {
    auto directory = logsDirectory ? *std::move(logsDirectory) : defaultDirectory(applicationName);
    return std::shared_ptr<DDLogFileManagerDefault>(
        new DDLogFileManagerDefault(std::move(directory), std::move(applicationName)));
}

DDLogFileManagerDefault::DDLogFileManagerDefault(std::string logsDirectory, std::string applicationName)
    : directory_(std::move(logsDirectory)), prefix_(std::move(applicationName) + ' ') {}

void DDLogFileManagerDefault::setMaximumNumberOfLogFiles(std::uint64_t count) {
    if (maximumCount_.exchange(count) != count) startCleanUp();
}

void DDLogFileManagerDefault::setLogFilesDiskQuota(std::uint64_t bytes) {
    if (quota_.exchange(bytes) != bytes) startCleanUp();
}

std::vector<DDLogFileInfo> DDLogFileManagerDefault::sortedLogFileInfos() const {
    std::vector<DDLogFileInfo> infos;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(directory_, error), end; !error && entry != end;
         entry.increment(error)) {
        if (auto info = infoOf(entry->path().filename().native())) infos.push_back(std::move(*info));
    }
    std::ranges::sort(infos, [](const DDLogFileInfo& a, const DDLogFileInfo& b) {
        return std::pair(a.creationDate, a.ordinal) > std::pair(b.creationDate, b.ordinal);
    });
    return infos;
}

std::optional<DDLogFileInfo> DDLogFileManagerDefault::infoOf(std::string_view name) const {
    if (name.size() < prefix_.size() + kSuffix.size()) return {};
    if (!name.starts_with(prefix_) || !name.ends_with(kSuffix)) return {};
    DDLogFileInfo info{.path = directory_ + '/' + std::string(name)};
    struct statx status {};
    if (::statx(AT_FDCWD, info.path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS | STATX_BTIME, &status) !=
            0 ||
        !S_ISREG(status.stx_mode))
        return {};
    info.fileSize = status.stx_size;
    info.isArchived = isArchived(info.path);
    name.remove_prefix(prefix_.size());
    name.remove_suffix(kSuffix.size());
    if (const auto date = logFileDate(name)) {
        info.creationDate = *date;
        info.ordinal = ordinalIn(name.substr(logFileDateText(*date).size()));
    } else {
        // Not every file system keeps the time of birth.
        const auto& time = (status.stx_mask & STATX_BTIME) ? status.stx_btime : status.stx_mtime;
        info.creationDate = Date{std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec)};
    }
    return info;
}

std::optional<DDLogFileManagerDefault::NewFile> DDLogFileManagerDefault::createNewLogFile() {
    std::error_code error;
    std::filesystem::create_directories(directory_, error);
    const std::string text = logFileDateText(Clock::current().wallNow());
    DDLogFileInfo info{.creationDate = *logFileDate(text)};
    for (;; ++info.ordinal) {
        info.path = directory_ + '/' + prefix_ + text;
        if (info.ordinal > 1) info.path += ' ' + std::to_string(info.ordinal);
        info.path += kSuffix;
        const int file =
            ::open(info.path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode);
        if (file >= 0) {
            startCleanUp();
            return NewFile{file, std::move(info)};
        }
        if (errno != EEXIST && errno != EINTR) return {};
    }
}

void DDLogFileManagerDefault::markArchived(const std::string& path) {
    const char mark = 1;
    if (::setxattr(path.c_str(), kArchivedAttribute, &mark, 1, 0) == 0 || errno == ENOENT) return;
    const std::lock_guard lock(mutex_);
    archived_.insert(path);
}

bool DDLogFileManagerDefault::isArchived(const std::string& path) const {
    char mark = 0;
    if (::lgetxattr(path.c_str(), kArchivedAttribute, &mark, 1) >= 0 || errno == ERANGE) return true;
    const std::lock_guard lock(mutex_);
    return archived_.contains(path);
}

void DDLogFileManagerDefault::startCleanUp() {
    LogQueue::shared().async([self = weak_from_this()] {
        if (const auto manager = self.lock()) manager->cleanUp();
    });
}

void DDLogFileManagerDefault::cleanUp() {
    std::error_code error;
    std::filesystem::create_directories(directory_, error);
    auto infos = sortedLogFileInfos();
    // The one that may be being written counts as the newest of all. Its date needn't be: where the clock was
    // set back, archived files carry later ones.
    const auto current = std::ranges::find(infos, false, &DDLogFileInfo::isArchived);
    const bool keepsFirst = current != infos.end();
    if (keepsFirst) std::rotate(infos.begin(), current, current + 1);
    std::size_t first = infos.size();
    if (const std::uint64_t quota = quota_; quota > 0) {
        std::uint64_t sum = 0;
        for (std::size_t i = 0; i < infos.size() && first == infos.size(); ++i) {
            sum += infos[i].fileSize;
            if (sum > quota) first = i;
        }
    }
    if (const std::uint64_t count = maximumCount_; count > 0) first = std::min<std::size_t>(first, count);
    for (std::size_t i = std::max<std::size_t>(first, keepsFirst ? 1 : 0); i < infos.size(); ++i) {
        ::unlink(infos[i].path.c_str());
        const std::lock_guard lock(mutex_);
        archived_.erase(infos[i].path);
    }
}

}  // namespace zqcore::platform
