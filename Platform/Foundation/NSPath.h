#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

// Path operations on texts. They look at no file. Repeated slashes count as one, trailing ones are dropped,
// the root stays, ".." isn't resolved. Threads: any. Failure: none; the empty path has empty parts.

/// "/tmp/a.tiff" gives "a.tiff", "/tmp/" gives "tmp", "/" gives "/".
[[nodiscard]] ZQ_EXPORT std::string lastPathComponent(std::string_view path);

/// "/tmp/a.tiff" gives "/tmp", "/tmp" and "/" give "/", "a" gives the empty path.
[[nodiscard]] ZQ_EXPORT std::string stringByDeletingLastPathComponent(std::string_view path);

/// What follows the last point of the last component; empty if nothing stands before or behind that point, or
/// if a blank follows it: ".tiff", "a." and "n.a b" have none, ".a.tiff" has "tiff".
[[nodiscard]] ZQ_EXPORT std::string pathExtension(std::string_view path);

/// The path without extension and point: "b.bundle/" gives "b"; unchanged but for its slashes without one.
[[nodiscard]] ZQ_EXPORT std::string stringByDeletingPathExtension(std::string_view path);

/// The two joined by exactly one slash: "/tmp" or "/tmp/" with "x" or "/x" gives "/tmp/x"; the empty path
/// with "x" gives "x", with "/x" gives "/x".
[[nodiscard]] ZQ_EXPORT std::string stringByAppendingPathComponent(std::string_view path,
                                                                   std::string_view component);

/// The pieces between the slashes, empty ones included: "/Users/ann/" gives "", "Users", "ann", "".
[[nodiscard]] ZQ_EXPORT std::vector<std::string_view> componentsSeparatedBySlash(std::string_view path);

}  // namespace zqcore::platform
