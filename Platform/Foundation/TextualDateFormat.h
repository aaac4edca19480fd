#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Foundation/NSTimeZone.h"

namespace zqcore::platform {

/// A date pattern with words in it: names of months and days, eras, zones and all else that UTS #35 knows.
/// Time: milliseconds since 1970. Threads: any; calls on one object wait for each other.
class TextualDateFormat {
  public:
    virtual ~TextualDateFormat() = default;
    [[nodiscard]] virtual std::string write(std::int64_t milliseconds) const = 0;
    /// Absent unless the whole text matches.
    [[nodiscard]] virtual std::optional<std::int64_t> read(std::string_view text) const = 0;
    /// A null pointer for a pattern that isn't valid.
    [[nodiscard]] static std::shared_ptr<const TextualDateFormat> make(std::string_view pattern,
                                                                       NSTimeZone zone);
};

}  // namespace zqcore::platform
