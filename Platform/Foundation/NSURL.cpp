#include "Platform/Foundation/NSURL.h"

#include <filesystem>
#include <system_error>

#include "Platform/Foundation/Text/Character.h"
#include "Platform/Foundation/Text/Utf8.h"

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

bool standsInURL(char character) noexcept {
    return standsInPath(character) ||
           (character != '\0' && std::string_view("?#[];").find(character) != std::string_view::npos);
}

void appendEncoded(std::string& text, char character) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    const auto byte = static_cast<unsigned char>(character);
    text += '%';
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 15U];
}

bool isEncodedByte(std::string_view text, std::size_t at) {
    const auto isDigit = [&](std::size_t i) {
        return i < text.size() && static_cast<unsigned char>(text[i]) < 0x80 &&
               hexDigitValue(static_cast<char32_t>(text[i]));
    };
    return text[at] == '%' && isDigit(at + 1) && isDigit(at + 2);
}

}  // namespace

std::optional<NSURL> NSURL::URLWithString(std::string_view text) {
    if (text.empty() || !isValidUTF8(text)) return std::nullopt;
    std::string url;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (standsInURL(text[i]) || isEncodedByte(text, i)) {
            url += text[i];
        } else {
            appendEncoded(url, text[i]);
        }
    }
    return NSURL(std::move(url));
}

NSURL NSURL::fileURLWithPath(std::string_view path) {
    std::string text = "file://";
    for (const char character : path) {
        if (standsInPath(character)) {
            text += character;
            continue;
        }
        appendEncoded(text, character);
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
