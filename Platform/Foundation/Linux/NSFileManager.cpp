#include "Platform/Foundation/NSFileManager.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <filesystem>

#include "Platform/Foundation/Linux/FileSupport.h"
#include "Platform/Foundation/NSPath.h"

namespace zqcore::platform {

namespace {

namespace fs = std::filesystem;
using posix::Access;

std::unexpected<NSError> failure(int number, std::string_view path, Access access) {
    return std::unexpected(posix::fileError(number, path, access));
}

/// A path with a NUL in it names nothing: the system would see only what stands before it, and take that for
/// the whole.
bool isCut(std::string_view path) noexcept { return path.find('\0') != std::string_view::npos; }

bool isThere(const std::string& path) {
    if (isCut(path)) {
        errno = ENOENT;
        return false;
    }
    struct stat facts {};
    return ::lstat(path.c_str(), &facts) == 0;
}

Date date(const statx_timestamp& stamp) {
    return dateSince1970(static_cast<double>(stamp.tv_sec)) + std::chrono::nanoseconds(stamp.tv_nsec);
}

NSFileAttributes::Type typeOf(unsigned mode) {
    if (S_ISREG(mode)) return NSFileAttributes::Type::regular;
    if (S_ISDIR(mode)) return NSFileAttributes::Type::directory;
    if (S_ISLNK(mode)) return NSFileAttributes::Type::symbolicLink;
    return NSFileAttributes::Type::other;
}

/// Whether `inner` lies in the folder `outer`, both seen with their links resolved.
bool liesWithin(const fs::path& inner, const fs::path& outer) {
    std::error_code ignored;
    const std::string whole = fs::weakly_canonical(inner, ignored).native() + "/";
    return whole.starts_with(fs::weakly_canonical(outer, ignored).native() + "/");
}

}  // namespace

NSFileManager& NSFileManager::defaultManager() noexcept {
    static NSFileManager manager;
    return manager;
}

bool NSFileManager::fileExistsAtPath(std::string_view path) const {
    bool ignored = false;
    return fileExistsAtPath(path, ignored);
}

bool NSFileManager::fileExistsAtPath(std::string_view path, bool& isDirectory) const {
    struct stat facts {};
    if (isCut(path) || ::stat(std::string(path).c_str(), &facts) != 0) return false;
    isDirectory = S_ISDIR(facts.st_mode);
    return true;
}

NSFileManager::Result<void> NSFileManager::createDirectoryAtPath(std::string_view path,
                                                                 bool withIntermediateDirectories) const {
    if (isCut(path)) return failure(ENOENT, path, Access::changing);
    const std::string whole(path);
    if (::mkdir(whole.c_str(), 0777) == 0) return {};
    const int failed = errno;
    if (!withIntermediateDirectories) return failure(failed, path, Access::changing);
    bool isDirectory = false;
    if (fileExistsAtPath(path, isDirectory)) {
        return isDirectory ? Result<void>{} : failure(EEXIST, path, Access::changing);
    }
    const std::string parent = stringByDeletingLastPathComponent(path);
    if (failed != ENOENT || parent.empty() || parent == path) return failure(failed, path, Access::changing);
    if (auto made = createDirectoryAtPath(parent, true); !made) return made;
    // Another process may have been quicker; that is as good.
    if (::mkdir(whole.c_str(), 0777) == 0 || errno == EEXIST) return {};
    return failure(errno, path, Access::changing);
}

NSFileManager::Result<void> NSFileManager::removeItemAtPath(std::string_view path) const {
    const std::string whole(path);
    if (!isThere(whole)) return failure(errno, path, Access::changing);
    std::error_code error;
    // A trailing slash would make a link count as its target.
    fs::remove_all(stringByAppendingPathComponent(whole, ""), error);
    if (error) return failure(error.value(), path, Access::changing);
    return {};
}

NSFileManager::Result<void> NSFileManager::copyItemAtPath(std::string_view from, std::string_view to) const {
    const fs::path source(stringByAppendingPathComponent(from, ""));
    const fs::path target(stringByAppendingPathComponent(to, ""));
    if (!isThere(source)) return failure(errno, from, Access::reading);
    if (isCut(to)) return failure(ENOENT, to, Access::changing);
    if (isThere(target)) return failure(EEXIST, to, Access::changing);
    std::error_code error;
    const bool folder = fs::is_directory(fs::symlink_status(source, error));
    if (folder && liesWithin(target, source)) return failure(EINVAL, to, Access::changing);
    fs::copy(source, target, fs::copy_options::recursive | fs::copy_options::copy_symlinks, error);
    if (!error) return {};
    // A half copy would pass for a whole one.
    const int failed = error.value();
    fs::remove_all(target, error);
    return failure(failed, to, Access::changing);
}

NSFileManager::Result<void> NSFileManager::moveItemAtPath(std::string_view from, std::string_view to) const {
    const std::string source(from);
    const std::string target(to);
    if (!isThere(source)) return failure(errno, from, Access::changing);
    if (isCut(to)) return failure(ENOENT, to, Access::changing);
    if (::renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) return {};
    if (errno != EXDEV) return failure(errno, to, Access::changing);
    if (auto copied = copyItemAtPath(from, to); !copied) return copied;
    return removeItemAtPath(from);
}

NSFileManager::Result<NSFileAttributes> NSFileManager::attributesOfItemAtPath(std::string_view path) const {
    if (isCut(path)) return failure(ENOENT, path, Access::reading);
    struct statx facts {};
    if (::statx(AT_FDCWD, std::string(path).c_str(), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS | STATX_BTIME,
                &facts) != 0) {
        return failure(errno, path, Access::reading);
    }
    NSFileAttributes attributes;
    attributes.type = typeOf(facts.stx_mode);
    attributes.size = facts.stx_size;
    attributes.modificationDate = date(facts.stx_mtime);
    // Not every file system keeps a birth time.
    attributes.creationDate = (facts.stx_mask & STATX_BTIME) ? date(facts.stx_btime) : date(facts.stx_mtime);
    attributes.posixPermissions = facts.stx_mode & 07777U;
    attributes.systemNumber = (std::uint64_t{facts.stx_dev_major} << 32) | facts.stx_dev_minor;
    attributes.systemFileNumber = facts.stx_ino;
    return attributes;
}

NSFileManager::Result<std::vector<std::string>> NSFileManager::contentsOfDirectoryAtPath(
    std::string_view path) const {
    if (isCut(path)) return failure(ENOENT, path, Access::reading);
    std::error_code error;
    std::vector<std::string> names;
    for (fs::directory_iterator entry(fs::path(path), error), end; !error && entry != end;
         entry.increment(error)) {
        names.push_back(entry->path().filename().native());
    }
    if (error) return failure(error.value(), path, Access::reading);
    return names;
}

NSFileManager::Result<Data> NSFileManager::contentsAtPath(std::string_view path) const {
    if (isCut(path)) return failure(ENOENT, path, Access::reading);
    auto bytes = posix::readFile(std::string(path));
    if (!bytes) return std::unexpected(bytes.error());
    return Data(*std::move(bytes));
}

NSFileManager::Result<void> NSFileManager::writeAtomically(std::string_view bytes, std::string_view path,
                                                           unsigned permissions) const {
    if (isCut(path)) return failure(ENOENT, path, Access::changing);
    static std::atomic<unsigned> serial{0};
    const std::string target(path);
    struct stat facts {};
    const unsigned mode = ::stat(target.c_str(), &facts) == 0 ? facts.st_mode & 07777U : permissions;
    const std::string temporary =
        target + ".sb-" + std::to_string(::getpid()) + "-" + std::to_string(serial.fetch_add(1));
    return posix::replaceFile(target, temporary, bytes, mode, /*durable=*/false);
}

}  // namespace zqcore::platform
