#pragma once

#include <concepts>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Foundation/JSON/JSONCoder.h"

namespace zqcore {

/// How a tolerant field reads and writes its value. `optionDecode` gives false only when the text itself is
/// broken; a value of a kind that it can't use leaves `out` empty and is passed.
template <class Coder>
concept CPOptionCodable = requires(JSONReader& reader, JSONWriter& writer,
                                   std::optional<typename Coder::OptionValueType>& out,
                                   const typename Coder::OptionValueType& value) {
    { Coder::optionDecode(reader, out) } -> std::same_as<bool>;
    Coder::optionEncode(writer, value);
};

/// A field of a record that reads a JSON value even if it has another kind than declared, and is empty where
/// it can't: reading never fails on it. The coders are those of `CPOptionImpl`.
///
///     CPOption<CPOptionImpl::OptionInt> count;    // reads 12, "12", 12.7 and true
///
/// A missing key and a null give an empty field, without a log line; every kind that was tried in vain is one
/// line at error level. An empty field is left out when written. Threads: a value.
template <CPOptionCodable Coder>
struct CPOption {
    std::optional<typename Coder::OptionValueType> wrappedValue;

    friend bool operator==(const CPOption&, const CPOption&) = default;
};

namespace optiondetail {

/// An empty value that is to be written by itself, outside of a field.
ZQ_EXPORT void logEmptyEncode(std::string_view typeName);
ZQ_EXPORT void logDecodeError(std::string_view typeName, const JSONError& error);
ZQ_EXPORT void logEncodeError(std::string_view typeName, const JSONError& error);

/// Writes the value in its own kind. One that JSON can't express, such as a NaN, is one line at error level
/// and stands as an empty object, so that it doesn't take the record around it along.
template <class Coder, class T>
void encode(JSONWriter& writer, const T& value) {
    if (writer.purpose() == JSONWriter::Purpose::description) return JSONCoder<T>::encode(writer, value);
    JSONWriter::Attempt attempt(writer);
    JSONCoder<T>::encode(writer, value);
    if (const auto error = attempt.takeFailure()) {
        logEncodeError(fullTypeName<Coder>(), *error);
        if (writer.beginObject()) writer.endObject();
    }
}

}  // namespace optiondetail

namespace platform {

template <class Coder>
struct JSONCoder<CPOption<Coder>> {
    static bool isAbsent(const CPOption<Coder>& value) noexcept { return !value.wrappedValue; }
    static bool decode(JSONReader& reader, CPOption<Coder>& out) {
        return Coder::optionDecode(reader, out.wrappedValue);
    }
    static void encode(JSONWriter& writer, const CPOption<Coder>& value) {
        if (!value.wrappedValue) return optiondetail::logEmptyEncode(fullTypeName<CPOption<Coder>>());
        Coder::optionEncode(writer, *value.wrappedValue);
    }
    /// Among the elements of an array, where it can't be left out: what the platform's encoder makes of an
    /// element that writes nothing.
    static void encodeAbsent(JSONWriter& writer) {
        optiondetail::logEmptyEncode(fullTypeName<CPOption<Coder>>());
        if (writer.beginObject()) writer.endObject();
    }
    static std::string typeText() { return JSONCoder<typename Coder::OptionValueType>::typeText(); }
};

}  // namespace platform

}  // namespace zqcore
