#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"

namespace zqcore::platform {

class CGImage;

/// The one filter that is called for: "CIColorControls", with "inputBrightness" from -1 to 1, which is added
/// to every channel and leaves alpha alone. Threads: one at a time. Failure: any other filter's name gives a
/// null pointer, any other key is ignored.
class ZQ_EXPORT CIFilter final : public NSObject {
  public:
    [[nodiscard]] static std::shared_ptr<CIFilter> filterWithName(std::string_view name);

    [[nodiscard]] const std::string& name() const noexcept { return name_; }
    /// Brightness 0, which changes nothing.
    void setDefaults() noexcept { brightness_ = 0; }
    void setValueForKey(CGFloat value, std::string_view key);
    [[nodiscard]] CGFloat brightness() const noexcept { return brightness_; }

    /// A filtered copy; the image itself if nothing changes, null for null.
    [[nodiscard]] std::shared_ptr<const CGImage> apply(std::shared_ptr<const CGImage> image) const;

  private:
    template <class T, class... Arguments>
    friend std::shared_ptr<T> makeObject(Arguments&&...);
    explicit CIFilter(std::string_view name) : name_(name) {}

    std::string name_;
    CGFloat brightness_ = 0;
};

}  // namespace zqcore::platform
