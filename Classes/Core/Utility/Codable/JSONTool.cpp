#include "Classes/Core/Utility/Codable/JSONTool.h"

#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Foundation/JSON/NSJSONSerialization.h"
#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore {

namespace {

using Where = JSONTool::Where;

/// "[FILE#LINE]": every message begins with the place of the calling code.
std::string placed(const Where& where) {
    std::string_view file = where.file_name();
    if (const auto slash = file.rfind('/'); slash != std::string_view::npos) file.remove_prefix(slash + 1);
    return '[' + std::string(file) + '#' + std::to_string(where.line()) + ']';
}

template <class Message>
void logFailure(const Where& where, const Message& message) {
    ZQLogError([&] { return placed(where) + message(); }, nullptr, where);
}

std::string described(std::string_view bytes) { return std::to_string(bytes.size()) + " bytes"; }

void logUnread(std::string_view bytes, const NSError& error, const Where& where) {
    logFailure(where, [&] {
        return "decode json objct 失败：data=" + described(bytes) + "; error=" + error.description();
    });
}

void logUnread(std::string_view bytes, const JSONTypeInfo& type, const JSONError& error, const Where& where) {
    logFailure(where, [&] {
        return "decode model 失败: type=" + std::string(type.fullName) + "; data=" + described(bytes) +
               "; error=" + error.description();
    });
}

/// A text, a boolean or a number is encodable by itself; null, arrays and dictionaries of anything are not.
bool isEncodable(const Value& value) { return value.isNumber() || value.asString(); }

}  // namespace

std::optional<Data> JSONTool::encodeModel(const void* model, const JSONTypeInfo& type, const Where& where) {
    const JSONEncoder encoder;
    auto data = encoder.encode(model, type);
    if (data) return *std::move(data);
    logFailure(where, [&] {
        return "encode model 失败: model=" + std::string(type.fullName) + ' ' +
               encoder.describe(model, type) + "; error=" + data.error().description();
    });
    return std::nullopt;
}

std::optional<Data> JSONTool::encodeToData(const GenericValue& value, const Where& where) {
    if (!value.model()) return encodeToData(value.value(), where);
    logFailure(where, [&] {
        return "encode any 需要转发到 encode encodable: obj=" + std::string(value.modelType()->fullName) +
               ' ' + JSONEncoder().describe(value.model(), *value.modelType());
    });
    return encodeModel(value.model(), *value.modelType(), where);
}

std::optional<Data> JSONTool::encodeToData(const Value& value, const Where& where) {
    if (isEncodable(value)) {
        logFailure(where,
                   [&] { return "encode any 需要转发到 encode encodable: obj=" + value.description(); });
        return encodeModel(&value, jsonTypeInfo<Value>(), where);
    }
    if (!NSJSONSerialization::isValidJSONObject(value)) {
        logFailure(where, [&] { return "encode data 失败，无效 json 对象: obj=" + value.description(); });
        return std::nullopt;
    }
    auto data = NSJSONSerialization::data(value);
    if (data) return *std::move(data);
    logFailure(where, [&] {
        return "encode any 失败: obj=" + value.description() + "; error=" + data.error().description();
    });
    return std::nullopt;
}

std::optional<Value> JSONTool::decodeToJSONObject(std::string_view text, const Where& where) {
    auto value = NSJSONSerialization::JSONObject(text, NSJSONReadingMutableContainers);
    if (value) return *std::move(value);
    if (!isValidUTF8(text)) {
        // Told here and not beforehand, which would cost every good text a pass of its own.
        logFailure(where, [&] { return "json objct string to data 失败: string=" + std::string(text); });
    } else {
        logUnread(text, value.error(), where);
    }
    return std::nullopt;
}

std::optional<Value> JSONTool::decodeToJSONObject(const Data& data, const Where& where) {
    auto value = NSJSONSerialization::JSONObject(data.view(), NSJSONReadingMutableContainers);
    if (value) return *std::move(value);
    logUnread(data.view(), value.error(), where);
    return std::nullopt;
}

bool JSONTool::decodeText(std::string_view text, void* model, const JSONTypeInfo& type, const Where& where) {
    const auto error = JSONDecoder().decode(text, model, type);
    if (!error) return true;
    if (!isValidUTF8(text)) {
        logFailure(where, [&] { return "model string to data 失败: string=" + std::string(text); });
    } else {
        logUnread(text, type, *error, where);
    }
    return false;
}

bool JSONTool::decodeBytes(std::string_view bytes, void* model, const JSONTypeInfo& type,
                           const Where& where) {
    const auto error = JSONDecoder().decode(bytes, model, type);
    if (error) logUnread(bytes, type, *error, where);
    return !error;
}

}  // namespace zqcore
