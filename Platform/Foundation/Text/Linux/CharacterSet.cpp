#include "Platform/Foundation/Text/CharacterSet.h"

#include <unicode/uchar.h>

#include <string_view>

namespace zqcore::platform {

bool CharacterSet::isDecimalDigit(char32_t scalar) noexcept {
    if (scalar < 0x80) return scalar >= '0' && scalar <= '9';
    return u_charType(static_cast<UChar32>(scalar)) == U_DECIMAL_DIGIT_NUMBER;
}

bool CharacterSet::isWhitespaceOrNewline(char32_t scalar) noexcept {
    if (scalar < 0x80) return scalar == ' ' || (scalar >= 0x09 && scalar <= 0x0D);
    if (scalar == 0x85 || scalar == 0x200B) return true;
    return (U_MASK(u_charType(static_cast<UChar32>(scalar))) & U_GC_Z_MASK) != 0;
}

bool CharacterSet::isPunctuation(char32_t scalar) noexcept {
    constexpr std::string_view kASCII = "!\"#%&'()*,-./:;?@[\\]_{}";
    if (scalar < 0x80) return kASCII.find(static_cast<char>(scalar)) != std::string_view::npos;
    return (U_MASK(u_charType(static_cast<UChar32>(scalar))) & U_GC_P_MASK) != 0;
}

}  // namespace zqcore::platform
