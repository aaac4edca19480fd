#pragma once

#include <cstdint>
#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// Reads numbers off the front of a text. Threads: one at a time. Lifetime: refers to the text.
class ZQ_EXPORT NSScanner final {
  public:
    explicit NSScanner(std::string_view text) noexcept : rest_(text) {}

    /// Passes blanks and line ends, then an optional "0x" or "0X", then as many hexadecimal digits as there
    /// are. False, and nothing passed and `value` untouched, without a digit. What doesn't fit into 32 bits
    /// gives the largest value.
    bool scanHexInt(std::uint32_t& value) noexcept;

    [[nodiscard]] bool isAtEnd() const noexcept { return rest_.empty(); }

  private:
    std::string_view rest_;
};

}  // namespace zqcore::platform
