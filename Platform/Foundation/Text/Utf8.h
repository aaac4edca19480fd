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
[[nodiscard]] inline DecodedScalar firstScalar(std::string_view text) noexcept {
    if (text.empty()) return {};
    constexpr DecodedScalar kBroken{kReplacementCharacter, 1};
    const unsigned lead = static_cast<unsigned char>(text[0]);
    // What a continuation byte carries; one that is none has more than six bits.
    const auto carried = [&](std::size_t i) -> unsigned {
        return static_cast<unsigned char>(text[i]) ^ 0x80U;
    };
    if (lead < 0x80) return {lead, 1};
    if (lead < 0xE0) {
        if (lead < 0xC2 || text.size() < 2 || carried(1) > 0x3F) return kBroken;
        return {(lead & 0x1FU) << 6U | carried(1), 2};
    }
    if (lead < 0xF0) {
        if (text.size() < 3 || (carried(1) | carried(2)) > 0x3F) return kBroken;
        const char32_t value = (lead & 0x0FU) << 12U | carried(1) << 6U | carried(2);
        if (value < 0x800 || (value >= 0xD800 && value < 0xE000)) return kBroken;
        return {value, 3};
    }
    if (text.size() < 4 || (carried(1) | carried(2) | carried(3)) > 0x3F) return kBroken;
    const char32_t value = (lead & 0x0FU) << 18U | carried(1) << 12U | carried(2) << 6U | carried(3);
    if (value < 0x10000 || value > 0x10FFFF) return kBroken;
    return {value, 4};
}

/// Whether no byte is above 0x7F.
[[nodiscard]] ZQ_EXPORT bool isASCII(std::string_view text) noexcept;

}  // namespace zqcore::platform
