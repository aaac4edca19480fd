#pragma once

#include <string>
#include <string_view>

#include "Platform/Base/Export.h"
#include "Platform/Foundation/NSPath.h"

namespace zqcore {

// Paths and URLs as texts. `lastPathComponent` is the platform's own, found in `NSPath.h` as the rest of the
// rules for repeated and trailing slashes. Threads: pure functions but for `openUrl`, any thread.

/// "/tmp/a.tiff" gives "/tmp".
[[nodiscard]] inline std::string deletingLastPathComponent(std::string_view path) {
    return stringByDeletingLastPathComponent(path);
}

/// "/tmp/a.tiff" gives "/tmp/a".
[[nodiscard]] inline std::string deletingPathExtension(std::string_view path) {
    return stringByDeletingPathExtension(path);
}

/// `directory` and `path` joined by one slash.
[[nodiscard]] inline std::string appendingFilePath(std::string_view directory, std::string_view path) {
    return stringByAppendingPathComponent(directory, path);
}

/// `url` and `path` joined with exactly one slash at the seam. Only one slash is dropped: further ones on
/// either side stay.
[[nodiscard]] ZQ_EXPORT std::string appendingHTTPPath(std::string_view url, std::string_view path);

/// Opens `url` with what the desktop opens its kind with. False for the empty text, for what is no URL, and
/// if nothing can open it; doesn't wait for it to be seen. Any thread.
[[nodiscard]] ZQ_EXPORT bool openUrl(std::string_view url);

}  // namespace zqcore
