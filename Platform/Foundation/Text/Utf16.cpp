#include "Platform/Foundation/Text/Utf16.h"

#include <cstdint>

#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore::platform {

std::size_t utf16Length(std::string_view text) noexcept {
    std::size_t length = 0;
    if (isValidUTF8(text)) {
        // One unit for each scalar, and a second one for those of four bytes.
        for (const char byte : text) {
            length += static_cast<signed char>(byte) >= -64;
            length += static_cast<unsigned char>(byte) >= 0xF0;
        }
        return length;
    }
    while (!text.empty()) {
        const auto scalar = firstScalar(text);
        length += scalar.value >= 0x10000 ? 2 : 1;
        text.remove_prefix(scalar.length);
    }
    return length;
}

std::u16string toUTF16(std::string_view text) {
    std::u16string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const auto [value, length] = firstScalar(text);
        if (value < 0x10000) {
            result.push_back(static_cast<char16_t>(value));
        } else {
            result.push_back(static_cast<char16_t>(0xD7C0 + (value >> 10U)));
            result.push_back(static_cast<char16_t>(0xDC00 + (value & 0x3FFU)));
        }
        text.remove_prefix(length);
    }
    return result;
}

std::string fromUTF16(std::u16string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t scalar = text[i];
        const bool leads = scalar >= 0xD800 && scalar < 0xDC00 && i + 1 < text.size();
        if (leads && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
            scalar = 0x10000 + ((scalar - 0xD800) << 10U) + (text[++i] - 0xDC00U);
        }
        appendScalar(result, scalar);
    }
    return result;
}

void appendScalar(std::string& text, char32_t scalar) {
    if (scalar > 0x10FFFF || (scalar >= 0xD800 && scalar < 0xE000)) scalar = kReplacementCharacter;
    const auto put = [&](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    const auto trail = [&](unsigned shift) { put(0x80U | ((scalar >> shift) & 0x3FU)); };
    if (scalar < 0x80) {
        put(scalar);
    } else if (scalar < 0x800) {
        put(0xC0U | scalar >> 6U);
        trail(0);
    } else if (scalar < 0x10000) {
        put(0xE0U | scalar >> 12U);
        trail(6);
        trail(0);
    } else {
        put(0xF0U | scalar >> 18U);
        trail(12);
        trail(6);
        trail(0);
    }
}

}  // namespace zqcore::platform
