#pragma once

#include <optional>
#include <source_location>
#include <string>

#include "Platform/Base/Export.h"
#include "Platform/Base/Value.h"
#include "Platform/Foundation/NSDictionary.h"

namespace zqcore {

// Operations on dictionaries. Threads: pure functions, any thread. Failure: the absent value.

/// Keys and objects swapped; absent if two keys hold equal objects. An empty dictionary gives an empty one.
template <class Key, class Object>
[[nodiscard]] std::optional<NSDictionary<Object, Key>> zq_reverseKeysAndObjectsDictionary(
    const NSDictionary<Key, Object>& dictionary) {
    NSDictionary<Object, Key> reversed;
    for (const auto& [key, object] : dictionary) reversed.set(object, key);
    if (reversed.size() != dictionary.size()) return std::nullopt;
    return reversed;
}
[[nodiscard]] ZQ_EXPORT std::optional<NSDictionary<Value, std::string>> zq_reverseKeysAndObjectsDictionary(
    const Value::Dictionary& dictionary);

/// "key=text&key=text" in the dictionary's order, nothing escaped. Absent if a value is no text, and for an
/// empty dictionary.
[[nodiscard]] ZQ_EXPORT std::optional<std::string> zq_parameterString(const Value::Dictionary& dictionary);

/// A copy all the way down. Absent, with one line at error level, if it is nested deeper than 512 levels,
/// which no archive holds.
[[nodiscard]] ZQ_EXPORT std::optional<Value::Dictionary> zq_deepCopy(
    const Value::Dictionary& dictionary, const std::source_location& where = std::source_location::current());

/// Sets the object under the key; no object stores null, no key does nothing.
ZQ_EXPORT void zq_safeSetObject(Value::Dictionary& dictionary, std::optional<Value> object,
                                std::optional<std::string> key);

}  // namespace zqcore
