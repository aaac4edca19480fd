#pragma once

#include <cstddef>

namespace zqcore::platform {

/// A run of UTF-16 units of a text. Threads: a value.
struct NSRange {
    std::size_t location = 0;
    std::size_t length = 0;
    friend bool operator==(const NSRange&, const NSRange&) = default;
};

}  // namespace zqcore::platform
