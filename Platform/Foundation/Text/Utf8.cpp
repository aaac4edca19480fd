#include "Platform/Foundation/Text/Utf8.h"

#include <cstring>

namespace zqcore::platform {

DecodedScalar firstScalar(std::string_view text) noexcept {
    if (text.empty()) return {};
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const auto continues = [&](std::size_t i) { return (byte(i) & 0xC0U) == 0x80U; };
    constexpr DecodedScalar kBroken{kReplacementCharacter, 1};
    const unsigned lead = byte(0);
    if (lead < 0x80) return {lead, 1};
    if (lead < 0xE0) {
        if (lead < 0xC2 || text.size() < 2 || !continues(1)) return kBroken;
        return {(lead & 0x1FU) << 6U | (byte(1) & 0x3FU), 2};
    }
    if (lead < 0xF0) {
        if (text.size() < 3 || !continues(1) || !continues(2)) return kBroken;
        const char32_t value = (lead & 0x0FU) << 12U | (byte(1) & 0x3FU) << 6U | (byte(2) & 0x3FU);
        if (value < 0x800 || (value >= 0xD800 && value < 0xE000)) return kBroken;
        return {value, 3};
    }
    if (text.size() < 4 || !continues(1) || !continues(2) || !continues(3)) return kBroken;
    const char32_t value =
        (lead & 0x0FU) << 18U | (byte(1) & 0x3FU) << 12U | (byte(2) & 0x3FU) << 6U | (byte(3) & 0x3FU);
    if (value < 0x10000 || value > 0x10FFFF) return kBroken;
    return {value, 4};
}

bool isASCII(std::string_view text) noexcept {
    constexpr std::uint64_t kHighBits = 0x8080808080808080U;
    std::size_t i = 0;
    for (; i + 8 <= text.size(); i += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + i, 8);
        if (word & kHighBits) return false;
    }
    for (; i < text.size(); ++i) {
        if (static_cast<unsigned char>(text[i]) >= 0x80) return false;
    }
    return true;
}

}  // namespace zqcore::platform
