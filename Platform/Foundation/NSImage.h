#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Base/Data.h"
#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"

namespace zqcore::platform {

/// An image as it was found: its name and its files, nothing decoded. What draws it decodes it.
/// Threads: any; it never changes. Failure: a file that is gone meanwhile has no bytes.
class ZQ_EXPORT NSImage final : public NSObject {
  public:
    /// One file of the image, `scale` pixels a point.
    struct Representation {
        std::string path;
        int scale = 1;
    };

    /// The image of that name among the main bundle's resources, or a null pointer.
    [[nodiscard]] static std::shared_ptr<NSImage> imageNamed(std::string_view name);
    /// The image `name` in a folder, or a null pointer: NAME.EXT, NAME@2x.EXT and NAME@3x.EXT of the first
    /// known extension that is there. The name may carry an extension itself.
    [[nodiscard]] static std::shared_ptr<NSImage> imageInFolder(const std::string& folder,
                                                                std::string_view name);

    [[nodiscard]] const std::string& name() const noexcept { return name_; }
    /// By rising scale; at least one.
    [[nodiscard]] const std::vector<Representation>& representations() const noexcept {
        return representations_;
    }
    /// The file that serves best for a screen of `scale`: the smallest that is large enough, else the
    /// largest.
    [[nodiscard]] const Representation& bestRepresentation(double scale) const noexcept;
    /// The encoded bytes of a file of the image.
    [[nodiscard]] static std::optional<Data> encodedBytes(const Representation& representation);

  private:
    template <class T, class... Arguments>
    friend std::shared_ptr<T> makeObject(Arguments&&...);
    NSImage(std::string name, std::vector<Representation> representations)
        : name_(std::move(name)), representations_(std::move(representations)) {}

    std::string name_;
    std::vector<Representation> representations_;
};

}  // namespace zqcore::platform
