#include "Classes/Core/Utility/ZQConvert.h"

#include <utility>

#include "Platform/Foundation/Text/Base64.h"
#include "Platform/Foundation/Text/Character.h"
#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore {

std::string ZQConvert::hexStringFromData(const Data& data, bool useLower) {
    const std::string_view digits = useLower ? "0123456789abcdef" : "0123456789ABCDEF";
    const std::size_t size = data.size() * 2;
    std::string text;
    text.resize_and_overwrite(size, [&](char* output, std::size_t) {
        for (const auto byte : data.bytes()) {
            *output++ = digits[byte >> 4U];
            *output++ = digits[byte & 15U];
        }
        return size;
    });
    return text;
}

std::optional<Data> ZQConvert::dataFromHexString(std::string_view string) {
    // Digits never join with a neighbour to one character, and anything else ends it: to go by scalars is to
    // go by characters.
    std::string bytes;
    bytes.reserve(string.size() / 2);
    bool odd = false;
    unsigned first = 0;
    while (!string.empty()) {
        const auto [scalar, length] = firstScalar(string);
        const auto digit = hexDigitValue(scalar);
        if (!digit) return std::nullopt;
        string.remove_prefix(length);
        if (odd) bytes.push_back(static_cast<char>(first * 16 + *digit));
        first = *digit;
        odd = !odd;
    }
    if (odd) return std::nullopt;
    return Data(std::move(bytes));
}

std::optional<Data> ZQConvert::dataFromUTF8String(std::string string) {
    if (!isValidUTF8(string)) return std::nullopt;
    return Data(std::move(string));
}

std::optional<std::string> ZQConvert::utf8StringFromData(Data data) {
    if (!isValidUTF8(data.view())) return std::nullopt;
    return std::move(data).take();
}

std::string ZQConvert::base64StringFromData(const Data& data) { return encodeBase64(data.view()); }

std::optional<Data> ZQConvert::dataFromBase64String(std::string_view string) {
    auto bytes = decodeBase64(string);
    if (!bytes) return std::nullopt;
    return Data(std::move(*bytes));
}

}  // namespace zqcore
