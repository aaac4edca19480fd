#include "Platform/Foundation/ObjectEquality.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "Platform/Foundation/ValueCast.h"

namespace zqcore::platform {

namespace {

bool areEqualNumbers(const Value& a, const Value& b) {
    if (const auto one = exactInt64(a), other = exactInt64(b); one || other) return one == other;
    if (const auto one = exactUInt64(a), other = exactUInt64(b); one || other) return one == other;
    const double one = a.numberAsDouble().value_or(0);
    const double other = b.numberAsDouble().value_or(0);
    // One key must find itself, so NaN equals NaN here.
    return one == other || (std::isnan(one) && std::isnan(other));
}

bool areEqualDictionaries(const ValueDictionary& a, const ValueDictionary& b) {
    return a.size() == b.size() && std::ranges::all_of(a, [&](const auto& entry) {
               const Value* other = b.find(entry.first);
               return other && isEqualObject(entry.second, *other);
           });
}

}  // namespace

bool isEqualObject(const Value& a, const Value& b) {
    if (a.isNumber() && b.isNumber()) return areEqualNumbers(a, b);
    if (a.kind() != b.kind()) return false;
    if (const auto* array = a.asArray()) {
        return std::ranges::equal(*array, *b.asArray(), isEqualObject);
    }
    if (const auto* dictionary = a.asDictionary())
        return areEqualDictionaries(*dictionary, *b.asDictionary());
    return a == b;
}

std::size_t objectHash(const Value& object) {
    if (const auto number = exactInt64(object)) return std::hash<std::int64_t>()(*number);
    if (const auto number = exactUInt64(object)) return std::hash<std::uint64_t>()(*number);
    if (const auto number = object.asReal()) return std::isnan(*number) ? 1 : std::hash<double>()(*number);
    if (const auto* text = object.asString()) return std::hash<std::string>()(*text);
    if (const auto* data = object.asData()) return std::hash<std::string_view>()(data->view());
    // The size is enough for containers, as on the platform: they are rare as keys.
    if (const auto* array = object.asArray()) return array->size();
    if (const auto* dictionary = object.asDictionary()) return dictionary->size();
    return static_cast<std::size_t>(object.kind());
}

}  // namespace zqcore::platform
