#pragma once

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// The platform's character sets, by Unicode general category. Threads: pure functions, any thread. ASCII is
/// answered without any Unicode data.
class ZQ_EXPORT CharacterSet final {
  public:
    CharacterSet() = delete;

    /// General category Nd: the decimal digits of all scripts.
    [[nodiscard]] static bool isDecimalDigit(char32_t scalar) noexcept;
    /// U+0009 to U+000D, U+0085, U+200B and general category Z*.
    [[nodiscard]] static bool isWhitespaceOrNewline(char32_t scalar) noexcept;
    /// General categories P*. In ASCII not `$ + < = > ^ | ~` and the backquote, which are symbols.
    [[nodiscard]] static bool isPunctuation(char32_t scalar) noexcept;
};

}  // namespace zqcore::platform
