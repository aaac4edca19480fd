#include "Platform/Foundation/JSON/NSJSONSerialization.h"

#include <cmath>
#include <utility>
#include <vector>

#include "Platform/Foundation/JSON/JSONReader.h"
#include "Platform/Foundation/JSON/JSONWriter.h"

namespace zqcore::platform {

namespace {

constexpr long kReadCorrupt = 3840;
constexpr int kDepth = 512;

NSError failure(const std::string& text) { return {NSCocoaErrorDomain, kReadCorrupt, text}; }

bool isContainer(const Value& value) { return value.asArray() || value.asDictionary(); }

}  // namespace

std::expected<Value, NSError> NSJSONSerialization::JSONObject(std::string_view text,
                                                              NSJSONReadingOptions options) {
    JSONReader reader(text);
    Value value;
    if (!reader.readValue(value) || !reader.finish()) {
        return std::unexpected(failure(reader.error()->description()));
    }
    if (!isContainer(value) && (options & NSJSONReadingFragmentsAllowed) == 0) {
        return std::unexpected(failure("the top level is neither an array nor an object"));
    }
    return value;
}

std::expected<Data, NSError> NSJSONSerialization::data(const Value& value) {
    JSONWriter writer;
    writer.value(value);
    auto text = writer.take();
    if (!text) return std::unexpected(failure(writer.error()->description()));
    return Data(*std::move(text));
}

bool NSJSONSerialization::isValidJSONObject(const Value& value) {
    if (!isContainer(value)) return false;
    std::vector<std::pair<const Value*, int>> pending{{&value, 1}};
    while (!pending.empty()) {
        const auto [next, depth] = pending.back();
        pending.pop_back();
        if (depth > kDepth) return false;
        switch (next->kind()) {
            case Value::Kind::data:
            case Value::Kind::date:
                return false;
            case Value::Kind::real:
                if (!std::isfinite(*next->asReal())) return false;
                break;
            case Value::Kind::array:
                for (const Value& element : *next->asArray()) pending.emplace_back(&element, depth + 1);
                break;
            case Value::Kind::dictionary:
                for (const auto& entry : *next->asDictionary())
                    pending.emplace_back(&entry.second, depth + 1);
                break;
            default:
                break;
        }
    }
    return true;
}

}  // namespace zqcore::platform
