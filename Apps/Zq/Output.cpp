#include "Apps/Zq/Output.h"

#include <cstdio>
#include <utility>

#include "Classes/Core/Utility/Codable/JSONTool.h"

namespace zq {

using zqcore::Value;

namespace {

Value shortened(const Value& value) {
    constexpr std::size_t kLongest = 100;
    constexpr std::size_t kKept = 24;
    if (const auto* text = value.asString(); text && text->size() > kLongest) {
        std::size_t cut = kKept;
        while (cut > 0 && (static_cast<unsigned char>((*text)[cut]) & 0xC0) == 0x80)
            --cut;  // not inside a character
        return {text->substr(0, cut) + "… (" + std::to_string(text->size()) + " bytes)"};
    }
    if (const auto* array = value.asArray()) {
        Value::Array result;
        for (const auto& element : *array) result.push_back(shortened(element));
        return {std::move(result)};
    }
    if (const auto* dictionary = value.asDictionary()) {
        Value::Dictionary result;
        for (const auto& [key, element] : *dictionary) result.set(key, shortened(element));
        return {std::move(result)};
    }
    return value;
}

}  // namespace

bool printJSON(Value value, bool brief) {
    if (brief) value = shortened(value);
    auto text = zqcore::JSONTool::encodeToString(value);
    if (!text) return false;
    text->push_back('\n');
    return std::fwrite(text->data(), 1, text->size(), stdout) == text->size() && std::fflush(stdout) == 0;
}

}  // namespace zq
