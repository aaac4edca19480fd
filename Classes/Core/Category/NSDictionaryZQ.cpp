#include "Classes/Core/Category/NSDictionaryZQ.h"

#include <utility>
#include <vector>

#include "Classes/Log/Log/ZQLog.h"

namespace zqcore {

namespace {

constexpr std::size_t kMaximumDepth = 512;

/// Whether a container lies deeper than that. Without recursion, which such a one would exhaust.
bool isTooDeep(const Value::Dictionary& dictionary) {
    std::vector<std::pair<const Value*, std::size_t>> waiting;
    const auto enter = [&](const Value& value, std::size_t depth) {
        if (value.asArray() || value.asDictionary()) waiting.emplace_back(&value, depth);
    };
    for (const auto& [key, value] : dictionary) enter(value, 2);
    while (!waiting.empty()) {
        const auto [container, depth] = waiting.back();
        waiting.pop_back();
        if (depth > kMaximumDepth) return true;
        if (const auto* array = container->asArray()) {
            for (const Value& value : *array) enter(value, depth + 1);
        } else {
            for (const auto& [key, value] : *container->asDictionary()) enter(value, depth + 1);
        }
    }
    return false;
}

}  // namespace

std::optional<NSDictionary<Value, std::string>> zq_reverseKeysAndObjectsDictionary(
    const Value::Dictionary& dictionary) {
    NSDictionary<Value, std::string> reversed;
    for (const auto& [key, object] : dictionary) reversed.set(object, key);
    if (reversed.size() != dictionary.size()) return std::nullopt;
    return reversed;
}

std::optional<std::string> zq_parameterString(const Value::Dictionary& dictionary) {
    std::string parameters;
    for (const auto& [key, object] : dictionary) {
        const std::string* text = object.asString();
        if (!text) return std::nullopt;
        parameters.append(key).append("=").append(*text).append("&");
    }
    if (parameters.empty()) return std::nullopt;
    parameters.pop_back();
    return parameters;
}

std::optional<Value::Dictionary> zq_deepCopy(const Value::Dictionary& dictionary,
                                             const std::source_location& where) {
    if (isTooDeep(dictionary)) {
        ZQLogError(
            [] { return "深拷贝异常 nested deeper than " + std::to_string(kMaximumDepth) + " levels"; },
            nullptr, where);
        return std::nullopt;
    }
    return dictionary;
}

void zq_safeSetObject(Value::Dictionary& dictionary, std::optional<Value> object,
                      std::optional<std::string> key) {
    if (!key) return;
    dictionary.set(*std::move(key), object ? *std::move(object) : Value());
}

}  // namespace zqcore
