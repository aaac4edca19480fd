#pragma once

#include <cstdint>
#include <expected>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Base/Data.h"
#include "Platform/Base/Date.h"
#include "Platform/Base/Export.h"
#include "Platform/Base/NSError.h"

namespace zqcore::platform {

// Codes of NSCocoaErrorDomain.
inline constexpr long NSFileNoSuchFileError = 4;
inline constexpr long NSFileReadNoPermissionError = 257;
inline constexpr long NSFileReadNoSuchFileError = 260;
inline constexpr long NSFileWriteUnknownError = 512;
inline constexpr long NSFileWriteNoPermissionError = 513;
inline constexpr long NSFileWriteFileExistsError = 516;
inline constexpr long NSFileWriteOutOfSpaceError = 640;

/// What the file system knows about one entry.
struct NSFileAttributes {
    enum class Type { regular, directory, symbolicLink, other };

    Type type = Type::other;
    std::uint64_t size = 0;
    Date creationDate{};
    Date modificationDate{};
    std::uint32_t posixPermissions = 0;
    std::uint64_t systemNumber = 0;      ///< the device
    std::uint64_t systemFileNumber = 0;  ///< the inode
};

/// Files and folders of this machine. Paths are texts in UTF-8, taken as they are; a relative one counts from
/// the process's working directory, one with a NUL in it names nothing.
/// Threads: any; nothing is kept between calls.
/// Failure: an `NSError` of NSCocoaErrorDomain: 4 and 260 no such file (on changing, on reading), 257 and 513
/// no permission, 516 exists, 640 disk full, 512 all else.
class ZQ_EXPORT NSFileManager final {
  public:
    template <class T>
    using Result = std::expected<T, NSError>;

    [[nodiscard]] static NSFileManager& defaultManager() noexcept;

    /// Whether something lies there, links followed; false for a dangling link and for the empty path.
    [[nodiscard]] bool fileExistsAtPath(std::string_view path) const;
    /// The same; `isDirectory` is set if it is true.
    [[nodiscard]] bool fileExistsAtPath(std::string_view path, bool& isDirectory) const;

    /// Makes a folder. Plain: fails with 516 if anything is there, with 4 if the parent is missing. With
    /// intermediates: succeeds if the folder is there, fails on a file in the way.
    Result<void> createDirectoryAtPath(std::string_view path, bool withIntermediateDirectories) const;
    /// Removes a file, a whole folder, or a link (not its target).
    Result<void> removeItemAtPath(std::string_view path) const;
    /// Copies a file or a whole folder, links as links; never onto something that is there, nor a folder into
    /// itself.
    Result<void> copyItemAtPath(std::string_view from, std::string_view to) const;
    /// Renames, also across file systems; never onto something that is there.
    Result<void> moveItemAtPath(std::string_view from, std::string_view to) const;

    /// Doesn't follow a final link.
    [[nodiscard]] Result<NSFileAttributes> attributesOfItemAtPath(std::string_view path) const;
    /// The names in a folder, without "." and "..", dot files included, not recursive, in no order.
    [[nodiscard]] Result<std::vector<std::string>> contentsOfDirectoryAtPath(std::string_view path) const;

    [[nodiscard]] Result<Data> contentsAtPath(std::string_view path) const;
    /// Replaces a file's content in one step: a reader sees the old or the new, whole. Goes through a
    /// temporary file beside it, which is gone if this fails. Keeps the permissions of the file that was
    /// there; a new one gets `permissions`.
    Result<void> writeAtomically(std::string_view bytes, std::string_view path,
                                 unsigned permissions = 0644) const;

  private:
    NSFileManager() = default;
};

}  // namespace zqcore::platform
