#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Classes/Core/Utility/Codable/CPOption.h"

namespace zqcore {

/// The coders of tolerant fields. Each tries a fixed list of JSON kinds; a success beyond the first is one
/// line at info level. All of them write the value in its own kind, whatever it was read from.
/// Threads: no state, any thread.
class ZQ_EXPORT CPOptionImpl final {
  public:
    CPOptionImpl() = delete;

    /// String, integer, double; a number as its decimal text.
    struct ZQ_EXPORT OptionString {
        using OptionValueType = std::string;
        static bool optionDecode(JSONReader& reader, std::optional<std::string>& out);
        static void optionEncode(JSONWriter& writer, const std::string& value);
    };

    /// Boolean, and of the integers 1 and 0.
    struct ZQ_EXPORT OptionBool {
        using OptionValueType = bool;
        static bool optionDecode(JSONReader& reader, std::optional<bool>& out);
        static void optionEncode(JSONWriter& writer, bool value);
    };

    /// Integer; string of an optional sign and digits; double, cut towards zero; boolean as 1 and 0. A string
    /// that is no number ends the search.
    struct ZQ_EXPORT OptionInt {
        using OptionValueType = std::int64_t;
        static bool optionDecode(JSONReader& reader, std::optional<std::int64_t>& out);
        static void optionEncode(JSONWriter& writer, std::int64_t value);
    };

    /// Double; string of a number in C notation, hexadecimal, infinite and NaN ones included.
    struct ZQ_EXPORT OptionDouble {
        using OptionValueType = double;
        static bool optionDecode(JSONReader& reader, std::optional<double>& out);
        static void optionEncode(JSONWriter& writer, double value);
    };

    /// Double; string of a plain decimal number.
    struct ZQ_EXPORT OptionCGFloat {
        using OptionValueType = double;
        static bool optionDecode(JSONReader& reader, std::optional<double>& out);
        static void optionEncode(JSONWriter& writer, double value);
    };

    /// Any codable type, and nothing but it.
    template <JSONCodable T>
    requires std::default_initializable<T>
    struct OptionX {
        using OptionValueType = T;
        static bool optionDecode(JSONReader& reader, std::optional<T>& out) {
            out.reset();
            // A record may turn out wrong in its midst, so it is read apart from the text around it.
            std::string_view text;
            if (!reader.readRaw(text)) return false;
            JSONReader own(text);
            if (JSONCoder<T>::decode(own, out.emplace())) return true;
            out.reset();
            optiondetail::logDecodeError(fullTypeName<OptionX>(), own.error().value_or(JSONError{}));
            return true;
        }
        static void optionEncode(JSONWriter& writer, const T& value) {
            optiondetail::encode<OptionX>(writer, value);
        }
    };
};

}  // namespace zqcore
