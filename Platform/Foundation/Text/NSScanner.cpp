#include "Platform/Foundation/Text/NSScanner.h"

#include <algorithm>
#include <limits>

#include "Platform/Foundation/Text/CharacterSet.h"
#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore::platform {

namespace {

/// 0 to 15, or 16 for what is no digit.
std::uint32_t hexDigit(char character) {
    if (character >= '0' && character <= '9') return static_cast<std::uint32_t>(character - '0');
    if (character >= 'a' && character <= 'f') return static_cast<std::uint32_t>(character - 'a') + 10;
    if (character >= 'A' && character <= 'F') return static_cast<std::uint32_t>(character - 'A') + 10;
    return 16;
}

}  // namespace

bool NSScanner::scanHexInt(std::uint32_t& value) noexcept {
    std::string_view text = rest_;
    while (!text.empty()) {
        const auto scalar = firstScalar(text);
        if (!CharacterSet::isWhitespaceOrNewline(scalar.value)) break;
        text.remove_prefix(scalar.length);
    }
    if ((text.starts_with("0x") || text.starts_with("0X")) && text.size() > 2 && hexDigit(text[2]) < 16) {
        text.remove_prefix(2);
    }
    std::uint64_t read = 0;
    std::size_t digits = 0;
    while (digits < text.size() && hexDigit(text[digits]) < 16) {
        constexpr std::uint64_t largest = std::numeric_limits<std::uint32_t>::max();
        read = std::min(read * 16 + hexDigit(text[digits]), largest);
        ++digits;
    }
    if (digits == 0) return false;
    rest_ = text.substr(digits);
    value = static_cast<std::uint32_t>(read);
    return true;
}

}  // namespace zqcore::platform
