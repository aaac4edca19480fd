#pragma once

#include <concepts>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <type_traits>

#include "Platform/Foundation/JSON/JSONCoder.h"

namespace zqcore {

/// One case of an enumeration. Its raw value is the text, or the number if the enumeration's raw type is the
/// integer; then the text is the case's name.
struct EnumCase {
    std::int64_t value;
    std::string_view text;
};

/// An enumeration without its type. The first case is the default.
struct EnumInfo {
    enum class Raw : std::uint8_t { string, integer };
    std::string_view typeName;
    Raw raw;
    std::span<const EnumCase> cases;
};

/// An enumeration that can't fail a decoding by its value: what the reading side doesn't know becomes
/// `defaultCase`, its first. It is declared inside a class by ZQ_STRING_ENUM or ZQ_INTEGER_ENUM, which tell
/// its cases once; an enumeration with raw texts of its own is declared by hand, with a function
/// `const EnumInfo& zqEnumInfo(E)` beside it.
template <class E>
concept EnumCodable = std::is_enum_v<E> && requires(E value) {
    { zqEnumInfo(value) } -> std::same_as<const EnumInfo&>;
};

template <EnumCodable E>
[[nodiscard]] E defaultCase() {
    return static_cast<E>(zqEnumInfo(E{}).cases.front().value);
}

/// The text of a case: its raw value in a string enumeration, its name in an integer one. Empty for a number
/// that is no case.
template <EnumCodable E>
[[nodiscard]] std::string_view caseText(E value) {
    for (const EnumCase& one : zqEnumInfo(value).cases) {
        if (one.value == static_cast<std::int64_t>(value)) return one.text;
    }
    return {};
}

/// The case with that raw text (or, in an integer enumeration, that name); absent if there is none.
template <EnumCodable E>
[[nodiscard]] std::optional<E> caseFromText(std::string_view text) {
    for (const EnumCase& one : zqEnumInfo(E{}).cases) {
        if (one.text == text) return static_cast<E>(one.value);
    }
    return std::nullopt;
}

namespace enumdetail {

[[nodiscard]] constexpr std::string_view caseName(std::string_view name) {
    if (name.ends_with('_')) name.remove_suffix(1);
    return name;
}

/// Reads a raw value and gives the number of its case, or the default's. A value of another kind writes an
/// error line and is passed. False only when the text itself is broken.
[[nodiscard]] ZQ_EXPORT bool decode(JSONReader& reader, const EnumInfo& info, std::int64_t& out);
ZQ_EXPORT void encode(JSONWriter& writer, const EnumInfo& info, std::int64_t value);
[[nodiscard]] ZQ_EXPORT std::string typeText(const EnumInfo& info);

}  // namespace enumdetail

namespace platform {

template <class E>
requires EnumCodable<E>
struct JSONCoder<E> {
    static bool decode(JSONReader& reader, E& out) {
        std::int64_t value = 0;
        if (!enumdetail::decode(reader, zqEnumInfo(out), value)) return false;
        out = static_cast<E>(value);
        return true;
    }
    static void encode(JSONWriter& writer, E value) {
        enumdetail::encode(writer, zqEnumInfo(value), static_cast<std::int64_t>(value));
    }
    static std::string typeText() { return enumdetail::typeText(zqEnumInfo(E{})); }
};

}  // namespace platform

}  // namespace zqcore

#define ZQ_ENUM_CASE(Type, name) \
    ::zqcore::EnumCase { static_cast<std::int64_t>(Type::name), ::zqcore::enumdetail::caseName(#name) }
#define ZQ_ENUM_OF(rawKind, Type, ...)                                                                 \
    enum class Type : std::int32_t { __VA_ARGS__ };                                                    \
    friend const ::zqcore::EnumInfo& zqEnumInfo(Type) {                                                \
        static constexpr ::zqcore::EnumCase cases[] = {ZQ_JSON_LIST(ZQ_ENUM_CASE, Type, __VA_ARGS__)}; \
        static constexpr ::zqcore::EnumInfo info{::zqcore::platform::fullTypeName<Type>(),             \
                                                 ::zqcore::EnumInfo::Raw::rawKind, cases};             \
        return info;                                                                                   \
    }

/// Declares, in the public part of a class, an EnumCodable enumeration whose raw values are its cases' names.
/// A name that C++ keeps for itself is written with an underscore behind it, which the raw value doesn't
/// have.
#define ZQ_STRING_ENUM(Type, ...) ZQ_ENUM_OF(string, Type, __VA_ARGS__)
/// The same with the numbers of the cases, from 0, as raw values.
#define ZQ_INTEGER_ENUM(Type, ...) ZQ_ENUM_OF(integer, Type, __VA_ARGS__)
