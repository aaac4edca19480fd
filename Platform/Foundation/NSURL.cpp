#include "Platform/Foundation/NSURL.h"

#include <filesystem>
#include <system_error>

#include "Platform/Foundation/Text/Character.h"

namespace zqcore::platform {
namespace {

bool standsInPath(char character) noexcept {
    if (character >= 'a' && character <= 'z') return true;
    if (character >= 'A' && character <= 'Z') return true;
    if (character >= '0' && character <= '9') return true;
    return character != '\0' &&
           std::string_view("/-._~!$&'()*+,=:@").find(character) != std::string_view::npos;
}

std::string percentDecoded(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto digit = [&](std::size_t at) {
            return hexDigitValue(static_cast<char32_t>(static_cast<unsigned char>(text[at])));
        };
        if (text[i] == '%' && i + 2 < text.size() && digit(i + 1) && digit(i + 2)) {
            decoded += static_cast<char>(*digit(i + 1) * 16 + *digit(i + 2));
            i += 2;
        } else {
            decoded += text[i];
        }
    }
    return decoded;
}

}  // namespace

NSURL NSURL::fileURLWithPath(std::string_view path) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text = "file://";
    for (const char character : path) {
        if (standsInPath(character)) {
            text += character;
            continue;
        }
        const auto byte = static_cast<unsigned char>(character);
        text += '%';
        text += kDigits[byte >> 4U];
        text += kDigits[byte & 15U];
    }
    std::error_code error;
    if (!text.ends_with('/') && std::filesystem::is_directory(path, error)) text += '/';
    return NSURL(std::move(text));
}

std::string NSURL::path() const {
    std::string_view rest = text_;
    const auto scheme = rest.find(':');
    if (scheme != std::string_view::npos) rest.remove_prefix(scheme + 1);
    if (rest.starts_with("//")) {
        const auto authority = rest.find('/', 2);
        rest = authority == std::string_view::npos ? std::string_view{} : rest.substr(authority);
    }
    rest = rest.substr(0, rest.find_first_of("?#"));
    while (rest.size() > 1 && rest.ends_with('/')) rest.remove_suffix(1);
    return percentDecoded(rest);
}

}  // namespace zqcore::platform
