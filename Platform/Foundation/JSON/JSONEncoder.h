#pragma once

#include <expected>

#include "Platform/Base/Data.h"
#include "Platform/Foundation/JSON/JSONCoder.h"

namespace zqcore::platform {

/// A codable type without its type: what the coding of a value needs at run time.
struct JSONTypeInfo {
    std::string_view fullName;
    bool (*decode)(JSONReader& reader, void* value);
    void (*encode)(JSONWriter& writer, const void* value);
};

template <JSONCodable T>
[[nodiscard]] const JSONTypeInfo& jsonTypeInfo() noexcept {
    static constexpr JSONTypeInfo info{
        fullTypeName<T>(),
        [](JSONReader& reader, void* value) { return JSONCoder<T>::decode(reader, *static_cast<T*>(value)); },
        [](JSONWriter& writer, const void* value) {
            JSONCoder<T>::encode(writer, *static_cast<const T*>(value));
        },
    };
    return info;
}

/// The platform's encoder with its default settings: compact, keys in the order of the fields, '/' as "\/".
/// Threads: a value without state. Failure: a value that JSON can't express (NaN, infinity, text that isn't
/// UTF-8), more than 512 levels, or a top-level value that encodes nothing; the error names the field.
class ZQ_EXPORT JSONEncoder final {
  public:
    template <JSONCodable T>
    [[nodiscard]] std::expected<Data, JSONError> encode(const T& value) const {
        return encode(&value, jsonTypeInfo<T>());
    }
    [[nodiscard]] std::expected<Data, JSONError> encode(const void* value, const JSONTypeInfo& type) const;

    /// The same text for log lines: what can't be expressed is told as well, and nothing fails.
    [[nodiscard]] std::string describe(const void* value, const JSONTypeInfo& type) const;
};

/// The platform's decoder with its default settings. It takes any top-level value; a byte order mark is
/// skipped, all else that RFC 8259 doesn't have is refused. The first of two equal keys counts.
/// Threads: a value without state. Failure: the error names the field and the place.
class ZQ_EXPORT JSONDecoder final {
  public:
    template <JSONCodable T>
    requires std::default_initializable<T>
    [[nodiscard]] std::expected<T, JSONError> decode(std::string_view text) const {
        std::expected<T, JSONError> result;
        if (auto error = decode(text, &*result, jsonTypeInfo<T>()))
            result = std::unexpected(*std::move(error));
        return result;
    }
    /// Reads into `value`, which is freshly made; absent when that went well.
    [[nodiscard]] std::optional<JSONError> decode(std::string_view text, void* value,
                                                  const JSONTypeInfo& type) const;
};

}  // namespace zqcore::platform
