#include "Platform/Scripting/Linux/BusValue.h"

#include <cerrno>
#include <chrono>
#include <string>
#include <utility>

#include "Platform/Scripting/Linux/SealedText.h"

namespace zqcore::platform {
namespace {

// A message may nest 64 containers (D-Bus specification, "Message Protocol"); a dictionary takes three a
// level.
constexpr int kDeepest = 18;

#define ZQ_BUS_TRY(call)                                                \
    do {                                                                \
        if (const int failure_ = (call); failure_ < 0) return failure_; \
    } while (false)

int appendText(sd_bus_message* message, const std::string& text) {
    if (!isSendableText(text)) return -EINVAL;
    return sd_bus_message_append_basic(message, 's', text.c_str());
}

int appendDictionaryAt(sd_bus_message* message, const ValueDictionary& dictionary, int depth);

int appendContent(sd_bus_message* message, const Value& value, int depth);

int appendVariantAt(sd_bus_message* message, const Value& value, const char* signature, int depth) {
    ZQ_BUS_TRY(sd_bus_message_open_container(message, 'v', signature));
    ZQ_BUS_TRY(appendContent(message, value, depth));
    return sd_bus_message_close_container(message);
}

const char* signatureOf(const Value& value) {
    switch (value.kind()) {
        case Value::Kind::null:
            return nullptr;
        case Value::Kind::boolean:
            return "b";
        case Value::Kind::integer:
            return value.asInt64() ? "x" : "t";
        case Value::Kind::real:
            return "d";
        case Value::Kind::string:
            return "s";
        case Value::Kind::data:
            return "ay";
        case Value::Kind::date:
            return "(x)";
        case Value::Kind::array:
            return "av";
        case Value::Kind::dictionary:
            return "a{sv}";
    }
    return nullptr;
}

int appendAnyAt(sd_bus_message* message, const Value& value, int depth) {
    if (depth > kDeepest) return -EMSGSIZE;
    const char* signature = signatureOf(value);
    return signature ? appendVariantAt(message, value, signature, depth) : -EINVAL;
}

int appendContent(sd_bus_message* message, const Value& value, int depth) {
    switch (value.kind()) {
        case Value::Kind::null:
            return -EINVAL;
        case Value::Kind::boolean: {
            const int truth = *value.asBool() ? 1 : 0;
            return sd_bus_message_append_basic(message, 'b', &truth);
        }
        case Value::Kind::integer:
            if (const auto number = value.asInt64())
                return sd_bus_message_append_basic(message, 'x', &*number);
            return sd_bus_message_append(message, "t", *value.asUInt64());
        case Value::Kind::real:
            return sd_bus_message_append(message, "d", *value.asReal());
        case Value::Kind::string:
            return appendText(message, *value.asString());
        case Value::Kind::data:
            return sd_bus_message_append_array(message, 'y', value.asData()->view().data(),
                                               value.asData()->size());
        case Value::Kind::date: {
            const std::int64_t moment = value.asDate()->time_since_epoch().count();
            return sd_bus_message_append(message, "(x)", moment);
        }
        case Value::Kind::array:
            ZQ_BUS_TRY(sd_bus_message_open_container(message, 'a', "v"));
            for (const Value& element : *value.asArray())
                ZQ_BUS_TRY(appendAnyAt(message, element, depth + 1));
            return sd_bus_message_close_container(message);
        case Value::Kind::dictionary:
            return appendDictionaryAt(message, *value.asDictionary(), depth);
    }
    return -EINVAL;
}

int appendDictionaryAt(sd_bus_message* message, const ValueDictionary& dictionary, int depth) {
    ZQ_BUS_TRY(sd_bus_message_open_container(message, 'a', "{sv}"));
    for (const auto& [key, value] : dictionary) {
        ZQ_BUS_TRY(sd_bus_message_open_container(message, 'e', "sv"));
        ZQ_BUS_TRY(appendText(message, key));
        ZQ_BUS_TRY(appendAnyAt(message, value, depth + 1));
        ZQ_BUS_TRY(sd_bus_message_close_container(message));
    }
    return sd_bus_message_close_container(message);
}

template <class T>
int readNumber(sd_bus_message* message, char type, Value& value) {
    T number{};
    ZQ_BUS_TRY(sd_bus_message_read_basic(message, type, &number));
    value = Value(number);
    return 1;
}

int readContent(sd_bus_message* message, std::string_view signature, Value& value);

int readArray(sd_bus_message* message, Value& value) {
    Value::Array elements;
    ZQ_BUS_TRY(sd_bus_message_enter_container(message, 'a', "v"));
    while (sd_bus_message_at_end(message, 0) == 0) {
        Value element;
        ZQ_BUS_TRY(readVariant(message, element));
        elements.push_back(std::move(element));
    }
    ZQ_BUS_TRY(sd_bus_message_exit_container(message));
    value = Value(std::move(elements));
    return 1;
}

int readBytes(sd_bus_message* message, Value& value) {
    const void* bytes = nullptr;
    std::size_t size = 0;
    ZQ_BUS_TRY(sd_bus_message_read_array(message, 'y', &bytes, &size));
    value = Value(Data(size == 0 ? std::string() : std::string(static_cast<const char*>(bytes), size)));
    return 1;
}

int readDate(sd_bus_message* message, Value& value) {
    std::int64_t moment = 0;
    ZQ_BUS_TRY(sd_bus_message_read(message, "(x)", &moment));
    value = Value(Date(std::chrono::nanoseconds(moment)));
    return 1;
}

int readContent(sd_bus_message* message, std::string_view signature, Value& value) {
    if (signature == "s") {
        const char* text = nullptr;
        ZQ_BUS_TRY(sd_bus_message_read_basic(message, 's', &text));
        value = Value(text);
        return 1;
    }
    if (signature == "b") {
        int truth = 0;
        ZQ_BUS_TRY(sd_bus_message_read_basic(message, 'b', &truth));
        value = Value(truth != 0);
        return 1;
    }
    // The narrow kinds come from other people's tools.
    if (signature == "y") return readNumber<std::uint8_t>(message, 'y', value);
    if (signature == "n") return readNumber<std::int16_t>(message, 'n', value);
    if (signature == "q") return readNumber<std::uint16_t>(message, 'q', value);
    if (signature == "i") return readNumber<std::int32_t>(message, 'i', value);
    if (signature == "u") return readNumber<std::uint32_t>(message, 'u', value);
    if (signature == "x") return readNumber<std::int64_t>(message, 'x', value);
    if (signature == "t") return readNumber<std::uint64_t>(message, 't', value);
    if (signature == "d") return readNumber<double>(message, 'd', value);
    if (signature == "ay") return readBytes(message, value);
    if (signature == "(x)") return readDate(message, value);
    if (signature == "av") return readArray(message, value);
    if (signature == "a{sv}") {
        ValueDictionary dictionary;
        ZQ_BUS_TRY(readDictionary(message, dictionary));
        value = Value(std::move(dictionary));
        return 1;
    }
    value = Value();
    return sd_bus_message_skip(message, std::string(signature).c_str());
}

}  // namespace

int appendVariant(sd_bus_message* message, const Value& value) { return appendAnyAt(message, value, 1); }

int appendDictionary(sd_bus_message* message, const ValueDictionary& dictionary) {
    return appendDictionaryAt(message, dictionary, 0);
}

int readVariant(sd_bus_message* message, Value& value) {
    char type = 0;
    const char* signature = nullptr;
    ZQ_BUS_TRY(sd_bus_message_peek_type(message, &type, &signature));
    if (type != 'v') return -EBADMSG;
    const std::string content(signature);
    ZQ_BUS_TRY(sd_bus_message_enter_container(message, 'v', content.c_str()));
    ZQ_BUS_TRY(readContent(message, content, value));
    return sd_bus_message_exit_container(message);
}

int readDictionary(sd_bus_message* message, ValueDictionary& dictionary) {
    ZQ_BUS_TRY(sd_bus_message_enter_container(message, 'a', "{sv}"));
    while (sd_bus_message_at_end(message, 0) == 0) {
        ZQ_BUS_TRY(sd_bus_message_enter_container(message, 'e', "sv"));
        const char* key = nullptr;
        ZQ_BUS_TRY(sd_bus_message_read_basic(message, 's', &key));
        std::string name(key);
        Value value;
        ZQ_BUS_TRY(readVariant(message, value));
        ZQ_BUS_TRY(sd_bus_message_exit_container(message));
        dictionary.set(std::move(name), std::move(value));
    }
    return sd_bus_message_exit_container(message);
}

#undef ZQ_BUS_TRY

}  // namespace zqcore::platform
