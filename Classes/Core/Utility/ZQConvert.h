#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Platform/Base/Data.h"
#include "Platform/Base/Export.h"

namespace zqcore {

/// Conversions between bytes and text. Where bytes and UTF-8 text turn into each other the storage moves:
/// hand over a large text with `std::move` and nothing is copied. Threads: pure, any thread. Failure: an
/// absent result, without a log line.
class ZQ_EXPORT ZQConvert final {
  public:
    ZQConvert() = delete;

    /// Two digits a byte, "%02x" or "%02X".
    [[nodiscard]] static std::string hexStringFromData(const Data& data, bool useLower);
    /// Digits of either case, fullwidth ones too. Absent for an odd count or any other character; the empty
    /// text gives the empty buffer.
    [[nodiscard]] static std::optional<Data> dataFromHexString(std::string_view string);
    /// The text's bytes; absent if they aren't UTF-8.
    [[nodiscard]] static std::optional<Data> dataFromUTF8String(std::string string);
    /// The bytes as text; absent if they aren't UTF-8.
    [[nodiscard]] static std::optional<std::string> utf8StringFromData(Data data);
    /// RFC 4648 section 4, with `=` padding and no line breaks.
    [[nodiscard]] static std::string base64StringFromData(const Data& data);
    /// Passes over characters outside the alphabet; absent if what remains is no whole base64.
    [[nodiscard]] static std::optional<Data> dataFromBase64String(std::string_view string);
};

// The same conversions read as properties of a byte buffer.
[[nodiscard]] inline std::string toHexLowerString(const Data& data) {
    return ZQConvert::hexStringFromData(data, true);
}
[[nodiscard]] inline std::string toHexUpperString(const Data& data) {
    return ZQConvert::hexStringFromData(data, false);
}
[[nodiscard]] inline std::string toBase64String(const Data& data) {
    return ZQConvert::base64StringFromData(data);
}
[[nodiscard]] inline std::optional<std::string> toUTF8String(Data data) {
    return ZQConvert::utf8StringFromData(std::move(data));
}

}  // namespace zqcore
