#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {

class CGImage;

// The list of windows of all applications, and pictures of them. Units: points with the origin at the primary
// screen's upper left corner and y downwards, unlike everywhere else. Threads: main thread. Failure: a lost
// display has no windows; windows that went meanwhile are left out.

using CGWindowID = std::int32_t;
inline constexpr CGWindowID kCGNullWindowID = 0;

inline constexpr unsigned kCGWindowListOptionAll = 0;
inline constexpr unsigned kCGWindowListOptionOnScreenOnly = 1;
inline constexpr unsigned kCGWindowImageDefault = 0;

/// One window of the list; the names of the platform's dictionary keys are told beside.
struct CGWindowDescription {
    CGWindowID number = 0;            ///< kCGWindowNumber
    std::string ownerName;            ///< kCGWindowOwnerName
    int ownerPID = 0;                 ///< kCGWindowOwnerPID; 0 where it isn't known
    std::optional<std::string> name;  ///< kCGWindowName
    CGRect bounds;                    ///< kCGWindowBounds
    int layer = 0;                    ///< kCGWindowLayer
};

/// Front to back. `relativeTo` is passed over but for the null window, which is all that is called for.
[[nodiscard]] ZQ_EXPORT std::vector<CGWindowDescription> CGWindowListCopyWindowInfo(unsigned option,
                                                                                    CGWindowID relativeTo);
[[nodiscard]] ZQ_EXPORT std::vector<CGWindowID> CGWindowListCreate(unsigned option, CGWindowID relativeTo);
/// In the order of `windows`.
[[nodiscard]] ZQ_EXPORT std::vector<CGWindowDescription> CGWindowListCreateDescriptionFromArray(
    const std::vector<CGWindowID>& windows);
/// These windows over each other as they lie on the screen, at its scale, transparent elsewhere; a window
/// that isn't shared draws nothing. Null for a rectangle without area.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<const CGImage> CGWindowListCreateImageFromArray(
    const CGRect& bounds, const std::vector<CGWindowID>& windows, unsigned option);

}  // namespace zqcore::platform
