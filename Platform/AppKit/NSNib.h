#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"

namespace zqcore::platform {

/// Objects that are made together, by name. Where the platform reads them from an archive, here a function
/// makes them. Threads: main thread. Lifetime: a registered nib stays. Failure: absent for an unknown name.
class ZQ_EXPORT NSNib final {
  public:
    NSNib() = delete;
    /// Makes the top-level objects; the owner may be null.
    using Factory =
        std::function<std::vector<std::shared_ptr<NSObject>>(const std::shared_ptr<NSObject>& owner)>;

    /// Gives the name to a factory; an empty one takes the name back.
    static void registerNib(std::string name, Factory factory);
    /// The top-level objects, new with each call.
    [[nodiscard]] static std::optional<std::vector<std::shared_ptr<NSObject>>> loadNibNamed(
        std::string_view name, const std::shared_ptr<NSObject>& owner);
};

}  // namespace zqcore::platform
