#pragma once

#include <algorithm>
#include <string>
#include <utility>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"

namespace zqcore::platform {

/// A column of a table: its name and its width in points. Threads: main thread.
class ZQ_EXPORT NSTableColumn final : public NSObject {
  public:
    explicit NSTableColumn(std::string identifier) : identifier_(std::move(identifier)) {}

    [[nodiscard]] const std::string& identifier() const noexcept { return identifier_; }
    [[nodiscard]] CGFloat width() const noexcept { return width_; }
    /// Shown at the table's next layout.
    void setWidth(CGFloat width) noexcept { width_ = std::max(0.0, width); }

  private:
    std::string identifier_;
    CGFloat width_ = 100;
};

}  // namespace zqcore::platform
