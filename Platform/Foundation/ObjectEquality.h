#pragma once

#include <cstddef>
#include <functional>
#include <optional>

#include "Platform/Base/Export.h"
#include "Platform/Base/Value.h"

namespace zqcore::platform {

// Equality and hash of objects as members of sets and as keys. For generic values they are the platform's:
// numbers compare by value, whatever their kind, so that true, 1 and 1.0 are one key. For every other type
// they are `==` and `std::hash`. Threads: pure, any thread.

[[nodiscard]] ZQ_EXPORT bool isEqualObject(const Value& a, const Value& b);
[[nodiscard]] ZQ_EXPORT std::size_t objectHash(const Value& object);

template <class T>
struct ObjectEqual : std::equal_to<T> {};
template <class T>
struct ObjectHash : std::hash<T> {};

template <>
struct ObjectEqual<Value> {
    bool operator()(const Value& a, const Value& b) const { return isEqualObject(a, b); }
};
template <>
struct ObjectHash<Value> {
    std::size_t operator()(const Value& object) const { return objectHash(object); }
};

template <class T>
struct ObjectEqual<std::optional<T>> {
    bool operator()(const std::optional<T>& a, const std::optional<T>& b) const {
        return a && b ? ObjectEqual<T>()(*a, *b) : a.has_value() == b.has_value();
    }
};
template <class T>
struct ObjectHash<std::optional<T>> {
    std::size_t operator()(const std::optional<T>& object) const {
        return object ? ObjectHash<T>()(*object) : 0;
    }
};

}  // namespace zqcore::platform
