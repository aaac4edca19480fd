#pragma once

#include <concepts>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Base/Export.h"
#include "Platform/Base/Value.h"

namespace zqcore::platform {

// Typed values to property-list objects and back. The way back is exact or fails: numbers turn into each
// other only where nothing is lost, texts and data into nothing but themselves, and one element that fails
// fails the whole of its array or dictionary. Threads: any.

/// The number (or boolean, as 1 or 0) if an integer of 64 bits, signed or unsigned, holds it exactly.
[[nodiscard]] ZQ_EXPORT std::optional<std::int64_t> exactInt64(const Value& object) noexcept;
[[nodiscard]] ZQ_EXPORT std::optional<std::uint64_t> exactUInt64(const Value& object) noexcept;
/// The number (or boolean) if a double holds it exactly; 2^53 + 1 isn't held.
[[nodiscard]] ZQ_EXPORT std::optional<double> exactDouble(const Value& object) noexcept;
/// A boolean, or a number that is 1 or 0.
[[nodiscard]] ZQ_EXPORT std::optional<bool> exactBool(const Value& object) noexcept;

/// How `T` is kept as an object. Specialised for every type that can be.
template <class T>
struct ObjectCoding;

/// A type whose values are property-list objects as they are.
template <class T>
concept PropertyListObject = requires(const T& value, const Value& object) {
    { ObjectCoding<T>::object(value) } -> std::same_as<Value>;
    { ObjectCoding<T>::cast(object) } -> std::same_as<std::optional<T>>;
};

template <>
struct ObjectCoding<Value> {
    static Value object(const Value& value) { return value; }
    static std::optional<Value> cast(const Value& object) { return object; }
};

template <>
struct ObjectCoding<bool> {
    static Value object(bool value) { return value; }
    static std::optional<bool> cast(const Value& object) { return exactBool(object); }
};

template <std::integral T>
requires(!std::same_as<T, bool>) struct ObjectCoding<T> {
    static Value object(T value) { return value; }
    static std::optional<T> cast(const Value& object) {
        if constexpr (std::is_signed_v<T>) {
            const auto number = exactInt64(object);
            if (number && std::in_range<T>(*number)) return static_cast<T>(*number);
        } else {
            const auto number = exactUInt64(object);
            if (number && std::in_range<T>(*number)) return static_cast<T>(*number);
        }
        return std::nullopt;
    }
};

template <>
struct ObjectCoding<double> {
    static Value object(double value) { return value; }
    static std::optional<double> cast(const Value& object) { return exactDouble(object); }
};

template <>
struct ObjectCoding<float> {
    static Value object(float value) { return static_cast<double>(value); }
    static std::optional<float> cast(const Value& object) {
        const auto number = exactDouble(object);
        if (!number) return std::nullopt;
        // A double beyond the range of float has no defined conversion.
        constexpr double limit = std::numeric_limits<float>::max();
        const bool finite = *number >= -limit && *number <= limit;
        const bool special = *number != *number || *number - *number != 0;
        if (!special && (!finite || static_cast<double>(static_cast<float>(*number)) != *number)) {
            return std::nullopt;
        }
        return static_cast<float>(*number);
    }
};

namespace valuecast {

template <class T>
[[nodiscard]] std::optional<T> copied(const T* found) {
    if (!found) return std::nullopt;
    return *found;
}

}  // namespace valuecast

template <>
struct ObjectCoding<std::string> {
    static Value object(const std::string& value) { return value; }
    static std::optional<std::string> cast(const Value& object) {
        return valuecast::copied(object.asString());
    }
};

template <>
struct ObjectCoding<Data> {
    static Value object(const Data& value) { return value; }
    static std::optional<Data> cast(const Value& object) { return valuecast::copied(object.asData()); }
};

template <>
struct ObjectCoding<Date> {
    static Value object(Date value) { return value; }
    static std::optional<Date> cast(const Value& object) { return object.asDate(); }
};

template <>
struct ObjectCoding<Value::Dictionary> {
    static Value object(const Value::Dictionary& value) { return value; }
    static std::optional<Value::Dictionary> cast(const Value& object) {
        return valuecast::copied(object.asDictionary());
    }
};

template <PropertyListObject T>
struct ObjectCoding<std::vector<T>> {
    static Value object(const std::vector<T>& value) {
        Value::Array array;
        array.reserve(value.size());
        for (const T& element : value) array.push_back(ObjectCoding<T>::object(element));
        return array;
    }
    static std::optional<std::vector<T>> cast(const Value& object) {
        const auto* array = object.asArray();
        if (!array) return std::nullopt;
        std::vector<T> elements;
        elements.reserve(array->size());
        for (const Value& element : *array) {
            auto one = ObjectCoding<T>::cast(element);
            if (!one) return std::nullopt;
            elements.push_back(*std::move(one));
        }
        return elements;
    }
};

template <PropertyListObject T>
struct ObjectCoding<std::map<std::string, T>> {
    static Value object(const std::map<std::string, T>& value) {
        Value::Dictionary dictionary;
        for (const auto& [key, element] : value) dictionary.set(key, ObjectCoding<T>::object(element));
        return dictionary;
    }
    static std::optional<std::map<std::string, T>> cast(const Value& object) {
        const auto* dictionary = object.asDictionary();
        if (!dictionary) return std::nullopt;
        std::map<std::string, T> entries;
        for (const auto& [key, element] : *dictionary) {
            auto one = ObjectCoding<T>::cast(element);
            if (!one) return std::nullopt;
            entries.emplace(key, *std::move(one));
        }
        return entries;
    }
};

/// An absent value is no object (null).
template <PropertyListObject T>
struct ObjectCoding<std::optional<T>> {
    static Value object(const std::optional<T>& value) {
        return value ? ObjectCoding<T>::object(*value) : Value();
    }
    static std::optional<std::optional<T>> cast(const Value& object) {
        auto one = ObjectCoding<T>::cast(object);
        if (!one) return std::nullopt;
        return std::optional<std::optional<T>>(std::in_place, std::move(one));
    }
};

}  // namespace zqcore::platform
