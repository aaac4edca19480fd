#pragma once

#include "Platform/Base/CGGeometry.h"

namespace zqcore::platform {

/// A fixed colour: red, green, blue and alpha from 0 to 1 in sRGB, not multiplied. Clear black when new.
/// Threads: a value.
struct CGColor {
    CGFloat red = 0;
    CGFloat green = 0;
    CGFloat blue = 0;
    CGFloat alpha = 0;
    friend bool operator==(const CGColor&, const CGColor&) = default;

    [[nodiscard]] static constexpr CGColor rgb(CGFloat red, CGFloat green, CGFloat blue,
                                               CGFloat alpha = 1) noexcept {
        return {red, green, blue, alpha};
    }
    [[nodiscard]] static constexpr CGColor white(CGFloat white, CGFloat alpha = 1) noexcept {
        return {white, white, white, alpha};
    }
    [[nodiscard]] static constexpr CGColor clear() noexcept { return {}; }

    [[nodiscard]] constexpr CGColor withAlpha(CGFloat newAlpha) const noexcept {
        return {red, green, blue, newAlpha};
    }
};

}  // namespace zqcore::platform
