#include "Apps/Zq/BodyChanges.h"

#include <string>

#include "Apps/Zq/Command.h"
#include "Apps/Zq/Output.h"
#include "Platform/Foundation/JSON/JSONEncoder.h"

namespace zq {

using namespace zqcore;

namespace {

bool isSame(const Value& given, const Value& sent) {
    if (given.isNumber() && sent.isNumber()) return given.numberAsDouble() == sent.numberAsDouble();
    return given == sent;
}

std::string shown(const Value& value) {
    const auto text = JSONEncoder().encode(value);
    return text ? shortened(std::string(text->view())) : "";
}

void compare(const Value& given, const Value& sent, const std::string& path) {
    if (given.asDictionary() && sent.asDictionary()) {
        for (const auto& [key, value] : *given.asDictionary()) {
            const std::string field = path.empty() ? key : path + "." + key;
            const Value* const counterpart = sent.asDictionary()->find(key);
            if (counterpart) {
                compare(value, *counterpart, field);
            } else if (!value.isNull()) {
                complain("the request has no field " + field + "; it is not sent");
            }
        }
        return;
    }
    if (given.asArray() && sent.asArray() && given.asArray()->size() == sent.asArray()->size()) {
        for (std::size_t i = 0; i < given.asArray()->size(); ++i)
            compare((*given.asArray())[i], (*sent.asArray())[i], path + "[" + std::to_string(i) + "]");
        return;
    }
    if (!isSame(given, sent)) complain(path + ": " + shown(given) + " is sent as " + shown(sent));
}

}  // namespace

void complainOfChanges(const Value& given, const Value& sent) { compare(given, sent, ""); }

}  // namespace zq
