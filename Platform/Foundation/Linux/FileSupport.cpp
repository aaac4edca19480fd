#include "Platform/Foundation/Linux/FileSupport.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

#include "Platform/Foundation/NSFileManager.h"
#include "Platform/Foundation/NSPath.h"

namespace zqcore::platform::posix {

namespace {

long cocoaCode(int number, Access access) {
    const bool reading = access == Access::reading;
    switch (number) {
        case ENOENT:
            return reading ? NSFileReadNoSuchFileError : NSFileNoSuchFileError;
        case EACCES:
        case EPERM:
            return reading ? NSFileReadNoPermissionError : NSFileWriteNoPermissionError;
        case EROFS:
            return NSFileWriteNoPermissionError;
        case EEXIST:
            return NSFileWriteFileExistsError;
        case ENOSPC:
        case EDQUOT:
            return NSFileWriteOutOfSpaceError;
        default:
            return NSFileWriteUnknownError;
    }
}

int writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd, bytes.data(), bytes.size());
        if (written < 0) {
            if (errno == EINTR) continue;
            return errno;
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
}

int writeNewFile(const std::string& path, std::string_view bytes, unsigned mode, bool durable) {
    const Descriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, mode));
    if (!file) return errno;
    // The mask of the process must not narrow what the file had before.
    if (::fchmod(file.get(), mode) != 0) return errno;
    if (const int failed = writeAll(file.get(), bytes)) return failed;
    if (durable && ::fsync(file.get()) != 0) return errno;
    return 0;
}

}  // namespace

NSError fileError(int number, std::string_view path, Access access) {
    std::string text(path);
    text += ": ";
    text += ::strerrordesc_np(number) ? ::strerrordesc_np(number) : "unknown error";
    return NSError(NSCocoaErrorDomain, cocoaCode(number, access), std::move(text));
}

std::expected<std::string, NSError> readFile(const std::string& path) {
    const auto failed = [&] { return std::unexpected(fileError(errno, path, Access::reading)); };
    // Without O_NONBLOCK the opening of a pipe that nobody writes would wait for ever.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file) return failed();
    struct stat facts {};
    if (::fstat(file.get(), &facts) != 0) return failed();
    if (!S_ISREG(facts.st_mode)) {
        errno = S_ISDIR(facts.st_mode) ? EISDIR : EINVAL;
        return failed();
    }
    // Files of /proc and /sys tell no size, or one that they don't keep; so the end is what read tells.
    std::string bytes(static_cast<std::size_t>(facts.st_size) + 1, '\0');
    std::size_t filled = 0;
    for (;;) {
        if (filled == bytes.size()) bytes.resize(bytes.size() * 2 + 4096);
        const ssize_t count = ::read(file.get(), bytes.data() + filled, bytes.size() - filled);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return failed();
        if (count == 0) break;
        filled += static_cast<std::size_t>(count);
    }
    bytes.resize(filled);
    return bytes;
}

std::expected<void, NSError> replaceFile(const std::string& path, const std::string& temporary,
                                         std::string_view bytes, unsigned mode, bool durable) {
    int failed = writeNewFile(temporary, bytes, mode, durable);
    if (failed == 0 && ::rename(temporary.c_str(), path.c_str()) != 0) failed = errno;
    if (failed != 0) {
        ::unlink(temporary.c_str());
        return std::unexpected(fileError(failed, path, Access::changing));
    }
    if (durable) {
        const std::string folder = stringByDeletingLastPathComponent(path);
        const Descriptor directory(
            ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!directory || ::fsync(directory.get()) != 0) {
            return std::unexpected(fileError(errno, folder, Access::changing));
        }
    }
    return {};
}

}  // namespace zqcore::platform::posix
