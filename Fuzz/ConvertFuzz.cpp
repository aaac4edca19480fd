// The bytes as base64, as hexadecimal text and as UTF-8; and as bytes that come back from each.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "Classes/Core/Utility/ZQConvert.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zqcore;
    const Data bytes(std::span(data, size));
    const auto base64 = toBase64String(bytes);
    if (ZQConvert::dataFromBase64String(base64) != bytes) std::abort();
    if (ZQConvert::dataFromHexString(toHexLowerString(bytes)) != bytes) std::abort();
    // What was read from a strange writing has one plain writing, which reads the same.
    if (const auto read = ZQConvert::dataFromBase64String(bytes.view())) {
        if (ZQConvert::dataFromBase64String(toBase64String(*read)) != *read) std::abort();
    }
    if (const auto read = ZQConvert::dataFromHexString(bytes.view())) {
        if (ZQConvert::dataFromHexString(toHexUpperString(*read)) != *read) std::abort();
    }
    if (const auto text = toUTF8String(bytes); text && ZQConvert::dataFromUTF8String(*text) != bytes)
        std::abort();
    return 0;
}
