#pragma once

#include <array>
#include <concepts>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "Platform/Base/Export.h"
#include "Platform/Base/TypeName.h"
#include "Platform/Foundation/JSON/JSONReader.h"
#include "Platform/Foundation/JSON/JSONWriter.h"

namespace zqcore::platform {

/// How a type is read from and written to JSON. Specialise it for a field type of your own:
///   static bool decode(JSONReader&, T& out);        // false after reader.fail(...) or a failed read
///   static void encode(JSONWriter&, const T&);
///   static bool isAbsent(const T&);                 // optional: then the field may be missing or null when
///                                                   // read, and is left out when absent
///   static void encodeAbsent(JSONWriter&);          // optional: what stands for an absent one in an array,
///                                                   // where it is a failure otherwise
///   static std::string typeText();                  // "string", "array of integer"; for listings
template <class T>
struct JSONCoder;

template <class T>
concept JSONCodable = requires(JSONReader& reader, JSONWriter& writer, T& value, const T& constant) {
    { JSONCoder<T>::decode(reader, value) } -> std::same_as<bool>;
    JSONCoder<T>::encode(writer, constant);
};

struct JSONRecordInfo;

/// One field of a record, without its type. `record` is a pointer to the record in all of them.
struct JSONFieldInfo {
    std::string_view name;
    /// The name as it stands in the text: quotes and colon.
    std::string_view quotedKey;
    /// It can't be absent, so a text without it doesn't decode.
    bool required;
    bool (*decode)(JSONReader& reader, void* record);
    /// Writes key and value, or nothing if the field is absent.
    void (*encode)(JSONWriter& writer, const void* record);
    std::string (*typeText)();
    /// The fields of a field that is a record or an array of records; otherwise a null pointer.
    const JSONRecordInfo* (*nested)();
};

/// The fields of a record type, in the order in which they are written.
struct JSONRecordInfo {
    std::string_view typeName;
    std::span<const JSONFieldInfo> fields;
    /// One bit a field: it can't be absent.
    std::uint64_t required;
};

// Keys are matched letter by letter, unknown ones are passed, the first of two equal ones counts. A missing
// key and a null leave the field as it is: absent, in a record just made.
[[nodiscard]] ZQ_EXPORT bool decodeRecord(JSONReader& reader, void* record, const JSONRecordInfo& info);
ZQ_EXPORT void encodeRecord(JSONWriter& writer, const void* record, const JSONRecordInfo& info);

/// A type that names its fields by `ZQ_FIELDS`.
template <class T>
concept JSONRecord = requires {
    T::jsonFields();
};

/// One entry of a field list.
template <auto member>
struct JSONField {
    std::string_view name;
    std::string_view quotedKey;
};

namespace jsondetail {

template <class T>
concept MayBeAbsent = requires(const T& value) {
    { JSONCoder<T>::isAbsent(value) } -> std::same_as<bool>;
};

template <class Record, auto member>
constexpr JSONFieldInfo fieldInfo(const JSONField<member>& field) {
    using Member = std::remove_cvref_t<decltype(std::declval<Record&>().*member)>;
    using Coder = JSONCoder<Member>;
    JSONFieldInfo info{field.name, field.quotedKey, !MayBeAbsent<Member>, nullptr, nullptr, nullptr, nullptr};
    info.decode = [](JSONReader& reader, void* record) {
        return Coder::decode(reader, static_cast<Record*>(record)->*member);
    };
    info.encode = [](JSONWriter& writer, const void* record) {
        const Member& value = static_cast<const Record*>(record)->*member;
        if constexpr (MayBeAbsent<Member>) {
            if (Coder::isAbsent(value)) return;
        }
        constexpr std::string_view quotedKey = std::get<JSONField<member>>(Record::jsonFields()).quotedKey;
        writer.quotedKey(quotedKey);
        Coder::encode(writer, value);
    };
    info.typeText = [] { return Coder::typeText(); };
    info.nested = []() -> const JSONRecordInfo* {
        if constexpr (requires { Coder::nested(); }) {
            return Coder::nested();
        } else {
            return nullptr;
        }
    };
    return info;
}

template <class Record>
inline constexpr auto fieldTable = std::apply(
    [](const auto&... field) {
        return std::array<JSONFieldInfo, sizeof...(field)>{fieldInfo<Record>(field)...};
    },
    Record::jsonFields());

constexpr std::uint64_t requiredFields(std::span<const JSONFieldInfo> fields) {
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < fields.size(); ++i) bits |= std::uint64_t{fields[i].required} << i;
    return bits;
}

}  // namespace jsondetail

/// The fields of a record type, put together at compile time.
template <JSONRecord T>
[[nodiscard]] const JSONRecordInfo& recordInfo() noexcept {
    static_assert(jsondetail::fieldTable<T>.size() <= 64, "one bit a field says that it has been read");
    static constexpr JSONRecordInfo info{fullTypeName<T>(), jsondetail::fieldTable<T>,
                                         jsondetail::requiredFields(jsondetail::fieldTable<T>)};
    return info;
}

}  // namespace zqcore::platform

// The list of a macro's arguments, each handed to M(Type, argument), with commas between; as many as 256.
#define ZQ_JSON_PARENS ()
#define ZQ_JSON_EXPAND(...) ZQ_JSON_EXPAND3(ZQ_JSON_EXPAND3(ZQ_JSON_EXPAND3(ZQ_JSON_EXPAND3(__VA_ARGS__))))
#define ZQ_JSON_EXPAND3(...) ZQ_JSON_EXPAND2(ZQ_JSON_EXPAND2(ZQ_JSON_EXPAND2(ZQ_JSON_EXPAND2(__VA_ARGS__))))
#define ZQ_JSON_EXPAND2(...) ZQ_JSON_EXPAND1(ZQ_JSON_EXPAND1(ZQ_JSON_EXPAND1(ZQ_JSON_EXPAND1(__VA_ARGS__))))
#define ZQ_JSON_EXPAND1(...) __VA_ARGS__
#define ZQ_JSON_LIST(M, Type, ...) __VA_OPT__(ZQ_JSON_EXPAND(ZQ_JSON_LIST_STEP(M, Type, __VA_ARGS__)))
#define ZQ_JSON_LIST_STEP(M, Type, first, ...) \
    M(Type, first) __VA_OPT__(, ZQ_JSON_LIST_AGAIN ZQ_JSON_PARENS(M, Type, __VA_ARGS__))
#define ZQ_JSON_LIST_AGAIN() ZQ_JSON_LIST_STEP

#define ZQ_JSON_FIELD(Type, field) \
    ::zqcore::platform::JSONField<&Type::field> { #field, "\"" #field "\":" }

/// Names the fields of a record once, in the order in which they are written; reading and writing follow.
/// Stands in the public part of the class: ZQ_FIELDS(ASClient, pid, identifier, name, version, build).
#define ZQ_FIELDS(Type, ...) \
    static constexpr auto jsonFields() { return std::tuple{ZQ_JSON_LIST(ZQ_JSON_FIELD, Type, __VA_ARGS__)}; }
