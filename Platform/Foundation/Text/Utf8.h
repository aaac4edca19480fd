#pragma once

#include <cstdint>
#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// One Unicode scalar read from UTF-8, and how many bytes it took.
struct DecodedScalar {
    char32_t value = 0;
    std::uint8_t length = 0;
};

inline constexpr char32_t kReplacementCharacter = 0xFFFD;

/// Whether `text` is UTF-8 as RFC 3629 has it: no overlong form, no surrogate, nothing above U+10FFFF,
/// nothing cut off. Several bytes a cycle; any thread.
[[nodiscard]] ZQ_EXPORT bool isValidUTF8(std::string_view text) noexcept;

/// The first scalar of `text`. A byte that begins none reads as U+FFFD of one byte, the empty text as U+0000
/// of no bytes. Any thread.
[[nodiscard]] ZQ_EXPORT DecodedScalar firstScalar(std::string_view text) noexcept;

/// Whether no byte is above 0x7F.
[[nodiscard]] ZQ_EXPORT bool isASCII(std::string_view text) noexcept;

}  // namespace zqcore::platform
