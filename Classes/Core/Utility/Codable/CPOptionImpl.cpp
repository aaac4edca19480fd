#include "Classes/Core/Utility/Codable/CPOptionImpl.h"

#include <locale.h>
#include <stdlib.h>

#include <charconv>

#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Foundation/JSON/JSONNumber.h"

namespace zqcore {
namespace {

/// One coder's walk through its tries: each that fails is told, unless the text itself is broken.
class Tries final {
  public:
    Tries(JSONReader& reader, std::string_view coder) : reader_(reader), coder_(coder) {}

    /// Whether to go on after a failed try of `kind`, "" for the first.
    [[nodiscard]] bool failed(std::string_view kind) {
        const auto error = reader_.takeMismatch();
        if (!error) return false;
        ZQLogError([&] {
            std::string text(coder_);
            if (!kind.empty()) text.append(" ").append(kind);
            return text + " catch error: " + error->description();
        });
        return true;
    }

    void succeeded(std::string_view kind, const std::string& value) const {
        ZQLogInfo([&] { return std::string(coder_) + " try " + std::string(kind) + " success ✅: " + value; });
    }

    /// Nothing could be made of the value.
    [[nodiscard]] bool pass() { return reader_.skipValue(JSONReader::SkippedNumbers::any); }

  private:
    JSONReader& reader_;
    std::string_view coder_;
};

std::optional<std::int64_t> integerFrom(std::string_view text) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) return std::nullopt;
    }
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

/// All of `text` as strtod reads it, whatever the process's locale; no blanks and no payload of a NaN.
std::optional<double> realFrom(const std::string& text) {
    if (text.empty() || text.find_first_of(" \t\n\v\f\r(") != std::string::npos) return std::nullopt;
    static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    char* end = nullptr;
    const double value = strtod_l(text.c_str(), &end, plain);
    if (end != text.c_str() + text.size()) return std::nullopt;
    return value;
}

/// What a number formatter reads of plain decimals: no plus in front, no hexadecimal digits, no words.
bool isPlainDecimal(std::string_view text) {
    if (text.starts_with('-')) text.remove_prefix(1);
    return !text.empty() && text.find_first_not_of("0123456789.eE+-") == std::string_view::npos &&
           text[0] != '+' && text[0] != '-';
}

std::optional<std::int64_t> truncated(double value) {
    if (!(value > -0x1p63 && value < 0x1p63)) return std::nullopt;
    return static_cast<std::int64_t>(value);
}

std::string textOr(const std::optional<std::int64_t>& value) {
    return value ? std::to_string(*value) : "(null)";
}

}  // namespace

bool CPOptionImpl::OptionString::optionDecode(JSONReader& reader, std::optional<std::string>& out) {
    Tries tries(reader, "OptionString");
    if (reader.readString(out.emplace())) return true;
    out.reset();
    if (!tries.failed("")) return false;
    std::int64_t integer = 0;
    if (reader.readInt64(integer)) {
        out = std::to_string(integer);
        tries.succeeded("Int", *out);
        return true;
    }
    if (!tries.failed("Int")) return false;
    double real = 0;
    if (reader.readDouble(real)) {
        out = describeDouble(real);
        tries.succeeded("Double", *out);
        return true;
    }
    return tries.failed("Double") && tries.pass();
}

bool CPOptionImpl::OptionBool::optionDecode(JSONReader& reader, std::optional<bool>& out) {
    Tries tries(reader, "OptionBool");
    if (reader.readBool(out.emplace())) return true;
    out.reset();
    if (!tries.failed("")) return false;
    std::int64_t integer = 0;
    if (reader.readInt64(integer)) {
        if (integer == 0 || integer == 1) {
            out = integer == 1;
            tries.succeeded("Int", integer == 1 ? "true" : "false");
        }
        return true;
    }
    return tries.failed("Int") && tries.pass();
}

bool CPOptionImpl::OptionInt::optionDecode(JSONReader& reader, std::optional<std::int64_t>& out) {
    Tries tries(reader, "OptionInt");
    if (reader.readInt64(out.emplace())) return true;
    out.reset();
    if (!tries.failed("")) return false;
    std::string string;
    if (reader.readString(string)) {
        out = integerFrom(string);
        tries.succeeded("String", "string=" + string + "; int=" + textOr(out));
        return true;
    }
    if (!tries.failed("String")) return false;
    double real = 0;
    if (reader.readDouble(real)) {
        out = truncated(real);
        tries.succeeded("Double", textOr(out));
        return true;
    }
    if (!tries.failed("Double")) return false;
    bool boolean = false;
    if (reader.readBool(boolean)) {
        out = boolean ? 1 : 0;
        tries.succeeded("Bool", textOr(out));
        return true;
    }
    return tries.failed("Bool") && tries.pass();
}

bool CPOptionImpl::OptionDouble::optionDecode(JSONReader& reader, std::optional<double>& out) {
    Tries tries(reader, "OptionDouble");
    if (reader.readDouble(out.emplace())) return true;
    out.reset();
    if (!tries.failed("")) return false;
    std::string string;
    if (reader.readString(string)) {
        out = realFrom(string);
        tries.succeeded("String", "string=" + string + "; double=" + (out ? describeDouble(*out) : "(null)"));
        return true;
    }
    return tries.failed("String") && tries.pass();
}

bool CPOptionImpl::OptionCGFloat::optionDecode(JSONReader& reader, std::optional<double>& out) {
    Tries tries(reader, "OptionCGFloat");
    if (reader.readDouble(out.emplace())) return true;
    out.reset();
    if (!tries.failed("")) return false;
    std::string string;
    if (reader.readString(string)) {
        if (isPlainDecimal(string)) out = realFrom(string);
        if (out) tries.succeeded("String", describeDouble(*out));
        return true;
    }
    return tries.failed("String") && tries.pass();
}

void CPOptionImpl::OptionString::optionEncode(JSONWriter& writer, const std::string& value) {
    optiondetail::encode<OptionString>(writer, value);
}
void CPOptionImpl::OptionBool::optionEncode(JSONWriter& writer, bool value) { writer.boolean(value); }
void CPOptionImpl::OptionInt::optionEncode(JSONWriter& writer, std::int64_t value) { writer.integer(value); }
void CPOptionImpl::OptionDouble::optionEncode(JSONWriter& writer, double value) {
    optiondetail::encode<OptionDouble>(writer, value);
}
void CPOptionImpl::OptionCGFloat::optionEncode(JSONWriter& writer, double value) {
    optiondetail::encode<OptionCGFloat>(writer, value);
}

void optiondetail::logEmptyEncode(std::string_view typeName) {
    ZQLogError([&] { return std::string(typeName) + " encode 异常，理论上不该走这个分支"; });
}

void optiondetail::logEncodeError(std::string_view typeName, const JSONError& error) {
    ZQLogError([&] {
        return "CPOptionCodable " + std::string(typeName) + " encode catch error: " + error.description();
    });
}

void optiondetail::logDecodeError(std::string_view typeName, const JSONError& error) {
    ZQLogError([&] {
        return "CPOptionCodable " + std::string(typeName) + " decode catch error: " + error.description();
    });
}

}  // namespace zqcore
