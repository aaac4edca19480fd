#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Base/Export.h"
#include "Platform/Base/Value.h"

namespace zqcore::platform {

class NSImage;

/// A folder of code and resources with an information dictionary. Two shapes are known: APP/Contents with
/// MacOS or bin for the executable and Resources beside it, and the bare folder, which is the bundle itself.
/// The dictionary is the property list Info.plist: of APP/Contents; of a bare folder itself, or of a
/// Resources folder beside it; for the main bundle, failing these, what was compiled in (`zq_info_plist` in
/// CMake). Threads: any. Lifetime: held by `std::shared_ptr`. Failure: a file that is missing or no property
/// list gives an empty dictionary.
class ZQ_EXPORT NSBundle final {
  public:
    /// That of the running executable.
    [[nodiscard]] static std::shared_ptr<NSBundle> mainBundle();
    /// The bundle whose executable or library holds the code or data at `symbol`.
    [[nodiscard]] static std::shared_ptr<NSBundle> bundleForClass(const void* symbol);
    /// The bundle at that path, or a null pointer if no folder is there.
    [[nodiscard]] static std::shared_ptr<NSBundle> bundleWithURL(std::string_view path);

    [[nodiscard]] const std::string& bundlePath() const noexcept { return path_; }
    [[nodiscard]] const std::string& resourcePath() const noexcept { return resources_.front(); }

    /// Never null. A change of the file is seen at the next call, which costs a look at the file's date; the
    /// dictionary that was given stays as it was.
    [[nodiscard]] std::shared_ptr<const Value::Dictionary> infoDictionary() const;
    /// "CFBundleIdentifier", or the empty text.
    [[nodiscard]] std::string bundleIdentifier() const;

    /// The path of a resource; absent if nothing is there. An empty extension is none.
    [[nodiscard]] std::optional<std::string> pathForResource(std::string_view name,
                                                             std::string_view extension) const;
    /// The same: a local file's URL is its path here.
    [[nodiscard]] std::optional<std::string> URLForResource(std::string_view name,
                                                            std::string_view extension) const {
        return pathForResource(name, extension);
    }
    [[nodiscard]] std::shared_ptr<NSImage> imageForResource(std::string_view name) const;

    /// A bundle at `path` that has the given dictionary, whatever lies on disk.
    [[nodiscard]] static std::shared_ptr<NSBundle> makeForTesting(const std::string& path,
                                                                  Value::Dictionary info);
    /// Makes `bundle` the main one, the real one again for a null pointer.
    static void setMainBundleForTesting(std::shared_ptr<NSBundle> bundle);

    ~NSBundle();

  private:
    struct Information;
    NSBundle(const std::string& executableFolder, bool isMain);

    std::string path_;
    std::vector<std::string> resources_;
    std::unique_ptr<Information> information_;
};

}  // namespace zqcore::platform
