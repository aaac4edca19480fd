#pragma once

#include <memory>
#include <string>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"

namespace zqcore::platform {
class NSBundle;
class NSImage;
}  // namespace zqcore::platform

namespace zqcore {

/// The library's own resources: where they lie, and the images among them. The resource bundle
/// "ZQCore.bundle" lies beside the program or library that holds this class, or in the shared data of its
/// installation. Threads: any; nothing is kept. Failure: a null pointer and a log line.
class ZQ_EXPORT ZQCoreBundle : public NSObject {
  public:
    /// The bundle that holds this class itself: that of the program it is linked into, or of the shared
    /// library.
    [[nodiscard]] static std::shared_ptr<NSBundle> frameworkBunble();
    /// The library's resource bundle; a null pointer and the error line "获取 bundle 失败" if it isn't found.
    [[nodiscard]] static std::shared_ptr<NSBundle> bundle();
    /// The image of that name in `bundle`, else beside it in `frameworkBunble` (with an info line), else a
    /// null pointer (with an error line).
    [[nodiscard]] static std::shared_ptr<NSImage> image(const std::string& named);
};

}  // namespace zqcore
