#pragma once

#include <concepts>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Classes/Core/Utility/AbsentForm.h"
#include "Platform/Base/Value.h"
#include "Platform/Foundation/ValueCast.h"

namespace zqcore {

// Operations on the language's collections. Threads: pure functions, any thread. Failure: the absent value.

/// What can be asked whether it is empty.
template <class T>
concept Collection = requires(const T& collection) {
    { collection.empty() } -> std::convertible_to<bool>;
    collection.size();
};

/// The element, or absent for a negative index and for one past the end.
template <class T>
[[nodiscard]] AbsentForm<T> safeGet(const std::vector<T>& array, std::int64_t index) {
    if (index < 0 || static_cast<std::size_t>(index) >= array.size()) return {};
    return array[static_cast<std::size_t>(index)];
}

/// The texts that aren't empty, in order; absent if none is left.
[[nodiscard]] inline std::optional<std::vector<std::string>> asNotEmptyStrings(
    std::vector<std::string> array) {
    std::erase_if(array, [](const std::string& text) { return text.empty(); });
    if (array.empty()) return std::nullopt;
    return array;
}

template <Collection C>
[[nodiscard]] bool isNotEmpty(const C& collection) {
    return !collection.empty();
}

/// The collection, or absent if it is empty.
template <Collection C>
requires(!std::convertible_to<C, std::string_view>) [[nodiscard]] std::optional<C> asNotEmpty(C collection) {
    if (collection.empty()) return std::nullopt;
    return collection;
}

/// The platform's array of the same elements.
template <PropertyListObject T>
[[nodiscard]] Value::Array toNSArray(const std::vector<T>& array) {
    Value::Array objects;
    objects.reserve(array.size());
    for (const T& element : array) objects.push_back(ObjectCoding<T>::object(element));
    return objects;
}
/// The same as one that is shared and may be changed.
template <PropertyListObject T>
[[nodiscard]] std::shared_ptr<Value::Array> toNSMutableArray(const std::vector<T>& array) {
    return std::make_shared<Value::Array>(toNSArray(array));
}

/// The platform's dictionary of the same entries. `Map` is any map from texts.
template <class Map>
requires std::same_as<typename Map::key_type, std::string> && PropertyListObject<typename Map::mapped_type>
[[nodiscard]] Value::Dictionary toNSDictionary(const Map& entries) {
    Value::Dictionary objects;
    for (const auto& [key, value] : entries) {
        objects.set(key, ObjectCoding<typename Map::mapped_type>::object(value));
    }
    return objects;
}

}  // namespace zqcore
