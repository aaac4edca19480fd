#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Base/Export.h"
#include "Platform/Base/Value.h"
#include "Platform/Foundation/NSFileManager.h"
#include "Platform/Foundation/NSURL.h"

namespace zqcore {

// Operations on the file manager. Paths are texts in UTF-8; links are followed where it isn't said otherwise.
// Threads: any; all work is done on the calling one. Failure: a result that says so, and one line at error
// level where a caller would have to guess why.

/// Whether something that isn't a folder lies there. A folder there gives false and a line.
[[nodiscard]] ZQ_EXPORT bool zq_fileExists(const NSFileManager& manager, std::string_view path);

/// Whether a folder lies there. Something else there gives false and a line.
[[nodiscard]] ZQ_EXPORT bool zq_directoryExists(const NSFileManager& manager, std::string_view path);

/// Makes the folder with those above it, unless it is there. False, and a line, if a file is in the way or it
/// can't be made.
ZQ_EXPORT bool zq_createDirectoryIfNotExist(const NSFileManager& manager, std::string_view path);

/// Whether the file's type is one of `isConformsToUTTypes`, or of their kind. The type is known by the
/// extension; a link is only a link.
[[nodiscard]] ZQ_EXPORT bool zq_fileUTType(const NSFileManager& manager, const NSURL& url,
                                           const std::vector<std::string>& isConformsToUTTypes);

/// The object that the file holds as JSON text; absent, and a line, if it holds anything else.
[[nodiscard]] ZQ_EXPORT std::optional<Value::Dictionary> zq_dictionary(const NSFileManager& manager,
                                                                       std::string_view fromJsonFile);

/// The file's content; absent, and a line, if it can't be read or isn't UTF-8. A byte order mark stays.
[[nodiscard]] ZQ_EXPORT std::optional<std::string> zq_string(const NSFileManager& manager,
                                                             std::string_view fromFile);

/// A path at which nothing lies: the given one or, before its extension, the first of "(1)", "(2)" and so on
/// that is free: a.txt, a(1).txt, a(2).txt. Absent for the empty path. Somebody else may take it the moment
/// after.
[[nodiscard]] ZQ_EXPORT std::optional<std::string> zq_suitablePath(const NSFileManager& manager,
                                                                   std::string_view forPath);

/// In bytes, a final link not followed; 0 if nothing lies there or it can't be told.
[[nodiscard]] ZQ_EXPORT std::int64_t zq_fileSize(const NSFileManager& manager, std::string_view path);

/// Gets full paths, and answers whether they count.
using FolderSizeFilter = std::function<bool(const std::string& path)>;

/// The sizes of all files in the folder and below it, in bytes, those that `filter` refuses left out with all
/// that lies in them. A linked folder counts wherever a link leads to it; a circle of links ends. 0 for what
/// is no folder.
[[nodiscard]] ZQ_EXPORT std::int64_t zq_folderSize(const NSFileManager& manager, std::string_view path,
                                                   const FolderSizeFilter& filter = nullptr);

}  // namespace zqcore
