#include "Apps/Zq/Output.h"

#include <cstdio>
#include <utility>

#include "Apps/Zq/Command.h"
#include "Classes/Core/Utility/Codable/JSONTool.h"
#include "Platform/Foundation/NSDateFormatter.h"

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

bool put(std::string_view bytes) {
    return std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size() && std::fflush(stdout) == 0;
}

}  // namespace

bool printJSON(Value value, bool brief) {
    if (brief) value = shortened(value);
    auto text = zqcore::JSONTool::encodeToString(value);
    if (!text) return false;
    text->push_back('\n');
    return put(*text);
}

int finishWith(Value value, bool brief) {
    return printJSON(std::move(value), brief) ? kDone : complain("can't write the result", kUnreadable);
}

std::string dateText(zqcore::Date date) {
    zqcore::NSDateFormatter formatter;
    formatter.setDateFormat("yyyy-MM-dd'T'HH:mm:ss.SSS'Z'");
    formatter.setTimeZone(zqcore::NSTimeZone::timeZoneForSecondsFromGMT(0));
    return formatter.stringFromDate(date);
}

int finishWithBytes(std::string_view bytes, bool line) {
    return put(bytes) && (!line || put("\n")) ? kDone : complain("can't write the result", kUnreadable);
}

}  // namespace zq
