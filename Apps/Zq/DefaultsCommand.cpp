#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Apps/Zq/Arguments.h"
#include "Apps/Zq/Command.h"
#include "Apps/Zq/Input.h"
#include "Apps/Zq/Output.h"
#include "Classes/Core/Utility/Codable/JSONTool.h"
#include "Classes/Core/Utility/ZQConvert.h"
#include "Platform/Foundation/NSDateFormatter.h"
#include "Platform/Foundation/NSUserDefaults.h"
#include "Platform/Foundation/PropertyList.h"
#include "Platform/Foundation/Text/Utf8.h"

namespace zq {

using namespace zqcore;

namespace {

std::string_view typeOf(const Value& value) {
    switch (value.kind()) {
        case Value::Kind::null:
            break;
        case Value::Kind::boolean:
            return "boolean";
        case Value::Kind::integer:
            return "integer";
        case Value::Kind::real:
            return "real";
        case Value::Kind::string:
            return "string";
        case Value::Kind::data:
            return "data";
        case Value::Kind::date:
            return "date";
        case Value::Kind::array:
            return "array";
        case Value::Kind::dictionary:
            return "dictionary";
    }
    return "null";
}

/// What JSON has no kind for becomes text: data in base64, dates by RFC 3339, a number that is none by name.
Value inJSON(const Value& value) {
    if (const auto* data = value.asData()) return ZQConvert::base64StringFromData(*data);
    if (const auto date = value.asDate()) return dateText(*date);
    if (const auto real = value.asReal(); real && !std::isfinite(*real)) return value.description();
    if (const auto* array = value.asArray()) {
        Value::Array result;
        for (const Value& element : *array) result.push_back(inJSON(element));
        return result;
    }
    if (const auto* dictionary = value.asDictionary()) {
        Value::Dictionary result;
        for (const auto& [key, element] : *dictionary) result.set(key, inJSON(element));
        return result;
    }
    return value;
}

template <class T>
std::optional<Value> numberIn(const std::string& text) {
    T number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return Value(number);
}

/// A date as `dateText` writes it, the fraction left out or of any length; absent beyond the years 1678 to
/// 2262, which a date would be moved into.
std::optional<Value> dateIn(const std::string& text) {
    constexpr std::size_t kToSeconds = std::string_view("2021-03-04T05:06:07").size();
    NSDateFormatter formatter;
    formatter.setTimeZone(NSTimeZone::timeZoneForSecondsFromGMT(0));
    for (const char* pattern : {"yyyy-MM-dd'T'HH:mm:ss'Z'", "yyyy-MM-dd'T'HH:mm:ss.SSS'Z'"}) {
        formatter.setDateFormat(pattern);
        const auto date = formatter.dateFromString(text);
        if (date && dateText(*date).starts_with(text.substr(0, kToSeconds))) return Value(*date);
    }
    return std::nullopt;
}

/// The types of --type, and what a value of each is called in a message.
struct Type {
    std::string_view name;
    std::string_view wants;
};
constexpr Type kTypes[] = {
    {"string", "a text"},
    {"integer", "a whole number of 64 bits"},
    {"real", "a number"},
    {"boolean", "true, false, yes, no, 1 or 0"},
    {"date", "a date like 2021-03-04T05:06:07Z, of the years 1678 to 2261"},
    {"data", "base64"},
    {"json", "a JSON array or object"},
};

/// `text` as a value of the type; absent if it is none.
std::optional<Value> valueOf(const std::string& text, std::string_view type) {
    if (type == "string") return Value(text);
    if (type == "integer") {
        auto number = numberIn<std::int64_t>(text);
        return number ? number : numberIn<std::uint64_t>(text);
    }
    if (type == "real") return numberIn<double>(text);
    if (type == "boolean") {
        if (text == "true" || text == "yes" || text == "1") return Value(true);
        if (text == "false" || text == "no" || text == "0") return Value(false);
        return std::nullopt;
    }
    if (type == "date") return dateIn(text);
    if (type == "data") {
        auto data = ZQConvert::dataFromBase64String(text);
        return data ? std::optional(Value(std::move(*data))) : std::nullopt;
    }
    if (type == "json") {
        auto value = JSONTool::decodeToJSONObject(text);
        return value && !value->isNull() ? std::move(value) : std::nullopt;
    }
    return std::nullopt;
}

/// The settings of --to, or of zq itself, as they lie on disk now; null with a message, also for a key that
/// no settings can have.
std::shared_ptr<NSUserDefaults> settingsOf(const Arguments& parsed, int& code) {
    const auto to = parsed.value("to");
    code = kUsage;
    if (!parsed.addresseeIsGood()) return nullptr;
    if (!parsed.words().empty() && !isValidUTF8(parsed.words()[0])) {
        complain("the key isn't UTF-8");
        return nullptr;
    }
    auto settings = to ? NSUserDefaults::initWithSuiteName(*to) : NSUserDefaults::standardUserDefaults();
    code = kUnreadable;
    if (!settings || !settings->synchronize()) {
        complain("can't read " + (settings ? settings->path() : "the settings of " + to.value_or("zq")));
        return nullptr;
    }
    return settings;
}

int read(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {{"to"}, {"raw", false}}, {"[KEY]"});
    if (!parsed) return kUsage;
    if (parsed->has("raw") && parsed->words().empty()) return complain("--raw wants a KEY");
    int code = kUsage;
    const auto settings = settingsOf(*parsed, code);
    if (!settings) return code;
    Value::Dictionary result;
    result.set("settings", settings->path());
    if (parsed->words().empty()) {
        Value::Dictionary values;
        for (const auto& [key, value] : settings->dictionaryRepresentation()) {
            values.set(key, Value::Dictionary{{"type", typeOf(value)}, {"value", inJSON(value)}});
        }
        result.set("values", std::move(values));
        return finishWith(Value(std::move(result)));
    }
    const std::string& key = parsed->words()[0];
    const auto value = settings->objectForKey(key);
    if (parsed->has("raw")) {
        if (!value) return complain("there is no \"" + key + "\"", kAnsweredWithError);
        const Value shown = inJSON(*value);
        return shown.asString() ? finishWithBytes(*shown.asString(), true) : finishWith(shown);
    }
    result.set("key", key);
    result.set("type", typeOf(value.value_or(Value())));
    result.set("value", inJSON(value.value_or(Value())));
    if (const int written = finishWith(Value(std::move(result))); written != kDone) return written;
    return value ? kDone : kAnsweredWithError;
}

int write(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {{"to"}, {"type"}}, {"KEY", "VALUE"});
    if (!parsed) return kUsage;
    const std::string name = parsed->value("type").value_or("string");
    const auto* const type = std::ranges::find(kTypes, std::string_view(name), &Type::name);
    if (type == std::end(kTypes))
        return complain("--type is string, integer, real, boolean, date, data or json, not \"" + name + "\"");
    const std::string& key = parsed->words()[0];
    auto text = readTextArgument(parsed->words()[1]);
    if (!text) return kUnreadable;
    if (parsed->words()[1] == "-") text = withoutLineEnd(std::move(*text));
    const auto value = valueOf(*text, type->name);
    if (!value) return complain("--type " + name + " wants " + std::string(type->wants));
    if (const auto wrong = PropertyList::whyInvalid(Value(Value::Dictionary{{key, *value}}))) {
        return complain("settings can't hold " + *wrong);
    }
    int code = kUsage;
    const auto settings = settingsOf(*parsed, code);
    if (!settings) return code;
    settings->setObject(*value, key);
    if (!settings->synchronize()) return complain("can't write " + settings->path(), kUnreadable);
    return finishWith(Value(Value::Dictionary{
        {"settings", settings->path()}, {"key", key}, {"type", typeOf(*value)}, {"value", inJSON(*value)}}));
}

int remove(std::span<const std::string> arguments) {
    const auto parsed = Arguments::parse(arguments, {{"to"}}, {"KEY"});
    if (!parsed) return kUsage;
    int code = kUsage;
    const auto settings = settingsOf(*parsed, code);
    if (!settings) return code;
    const std::string& key = parsed->words()[0];
    const bool existed = settings->objectForKey(key).has_value();
    settings->removeObjectForKey(key);
    if (!settings->synchronize()) return complain("can't write " + settings->path(), kUnreadable);
    return finishWith(
        Value(Value::Dictionary{{"settings", settings->path()}, {"key", key}, {"deleted", Value(existed)}}));
}

int run(std::span<const std::string> arguments) {
    const std::string action = arguments.empty() ? "" : arguments[0];
    if (action == "read") return read(arguments.subspan(1));
    if (action == "write") return write(arguments.subspan(1));
    if (action == "delete") return remove(arguments.subspan(1));
    return complain("zq defaults knows read, write and delete; try zq defaults --help");
}

constexpr Offer kOffers[] = {
    {"", "read write delete"}, {"read", "--to --raw"}, {"write", "--to --type"}, {"delete", "--to"}};

}  // namespace

const Command kDefaultsCommand = {
    .name = "defaults",
    .summary = "read, write or delete settings of an application",
    .help =
        "usage: zq defaults read [--to IDENTIFIER]\n"
        "       zq defaults read KEY [--to IDENTIFIER] [--raw]\n"
        "       zq defaults write KEY VALUE [--to IDENTIFIER] [--type TYPE]\n"
        "       zq defaults delete KEY [--to IDENTIFIER]\n\n"
        "Works on the settings of the application, or of zq itself. It may be running: nobody loses what "
        "the\n"
        "other writes under another key, and it sees the change when it next reads its file. VALUE may be -\n"
        "for standard input.\n\n"
        "  --type TYPE   string (the default), integer, real, boolean (true, yes, 1 or false, no, 0), date\n"
        "                (as 2021-03-04T05:06:07Z), data (in base64), or json for an array or object\n"
        "  --raw         print the bare value of KEY\n\n"
        "Dates and data are printed as such texts; \"type\" tells what they are.\n\n"
        "example:\n"
        "  zq defaults write windowSize '[800,600]' --type json --to com.tessaradev.Orbel\n",
    .codes = exitCodes(kAnsweredWithError),
    .offers = kOffers,
    .hidden = false,
    .run = run,
};

}  // namespace zq
