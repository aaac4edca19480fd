#include "Platform/Foundation/Text/Base64.h"

#include <array>
#include <cstdint>
#include <utility>

#include "Platform/Foundation/Text/Base64Vector.h"

namespace zqcore::platform {
namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kForeign = 0x80;

constexpr auto kNumbers = [] {
    std::array<std::uint8_t, 256> numbers{};
    numbers.fill(kForeign);
    for (std::size_t i = 0; i < kAlphabet.size(); ++i) {
        numbers[static_cast<unsigned char>(kAlphabet[i])] = static_cast<std::uint8_t>(i);
    }
    return numbers;
}();

std::uint8_t numberOf(char character) noexcept { return kNumbers[static_cast<unsigned char>(character)]; }

void encodeRest(const char* input, const char* inputEnd, char* output) noexcept {
    const auto byte = [&](int i) { return static_cast<std::uint32_t>(static_cast<unsigned char>(input[i])); };
    for (; inputEnd - input >= 3; input += 3) {
        const std::uint32_t bits = byte(0) << 16U | byte(1) << 8U | byte(2);
        *output++ = kAlphabet[bits >> 18U];
        *output++ = kAlphabet[bits >> 12U & 63U];
        *output++ = kAlphabet[bits >> 6U & 63U];
        *output++ = kAlphabet[bits & 63U];
    }
    if (input == inputEnd) return;
    const bool two = inputEnd - input == 2;
    const std::uint32_t bits = byte(0) << 16U | (two ? byte(1) << 8U : 0U);
    *output++ = kAlphabet[bits >> 18U];
    *output++ = kAlphabet[bits >> 12U & 63U];
    *output++ = two ? kAlphabet[bits >> 6U & 63U] : '=';
    *output++ = '=';
}

/// Four characters of the alphabet at once; false, with nothing taken, if one is foreign.
bool decodeQuad(const char*& input, const char* inputEnd, char*& output) noexcept {
    if (inputEnd - input < 4) return false;
    const std::uint32_t a = numberOf(input[0]);
    const std::uint32_t b = numberOf(input[1]);
    const std::uint32_t c = numberOf(input[2]);
    const std::uint32_t d = numberOf(input[3]);
    if ((a | b | c | d) & kForeign) return false;
    const std::uint32_t bits = a << 18U | b << 12U | c << 6U | d;
    *output++ = static_cast<char>(bits >> 16U);
    *output++ = static_cast<char>(bits >> 8U);
    *output++ = static_cast<char>(bits);
    input += 4;
    return true;
}

/// Gives the end of what was written, or null if the text is no base64.
char* decode(const char* input, const char* inputEnd, char* output) noexcept {
    std::uint32_t bits = 0;
    unsigned letters = 0;  // of the quad under way
    std::size_t padding = 0;
    bool tryBlocks = true;  // not again before the foreign character that stopped them is passed
    while (input != inputEnd) {
        if (letters == 0 && padding == 0) {
            if (std::exchange(tryBlocks, false)) base64::decodeBlocks(input, inputEnd, output);
            if (decodeQuad(input, inputEnd, output)) continue;
            if (input == inputEnd) break;
        }
        const char character = *input++;
        if (character == '=') {
            ++padding;
            continue;
        }
        const std::uint8_t number = numberOf(character);
        if (number == kForeign) {
            tryBlocks = true;
            continue;
        }
        if (padding > 0) return nullptr;
        bits = bits << 6U | number;
        if (++letters < 4) continue;
        *output++ = static_cast<char>(bits >> 16U);
        *output++ = static_cast<char>(bits >> 8U);
        *output++ = static_cast<char>(bits);
        letters = 0;
    }
    if ((letters + padding) % 4 != 0) return nullptr;
    if (letters == 2) *output++ = static_cast<char>(bits >> 4U);
    if (letters == 3) {
        *output++ = static_cast<char>(bits >> 10U);
        *output++ = static_cast<char>(bits >> 2U);
    }
    return output;
}

}  // namespace

std::string encodeBase64(std::string_view bytes) {
    // The size that the callback is given may be that of the allocation (libstdc++ 12), so it has its own.
    const std::size_t size = (bytes.size() + 2) / 3 * 4;
    std::string text;
    text.resize_and_overwrite(size, [&](char* output, std::size_t) {
        const char* input = bytes.data();
        const char* const inputEnd = input + bytes.size();
        char* rest = output;
        base64::encodeBlocks(input, inputEnd, rest);
        encodeRest(input, inputEnd, rest);
        return size;
    });
    return text;
}

std::optional<std::string> decodeBase64(std::string_view text) {
    constexpr std::size_t kVectorSlack = 8;
    std::string bytes;
    bool valid = true;
    bytes.resize_and_overwrite(text.size() / 4 * 3 + 3 + kVectorSlack, [&](char* output, std::size_t) {
        const char* const end = decode(text.data(), text.data() + text.size(), output);
        valid = end != nullptr;
        return valid ? static_cast<std::size_t>(end - output) : 0U;
    });
    if (!valid) return std::nullopt;
    return bytes;
}

}  // namespace zqcore::platform
