#include "Classes/Core/Extension/JSValueExtension.h"

namespace zqcore {

namespace {

template <class T>
std::optional<T> checked(const JSValue& value, bool (JSValue::*isOfKind)() const,
                         T (JSValue::*convert)() const) {
    if (!isValid(value) || !(value.*isOfKind)()) return std::nullopt;
    return (value.*convert)();
}

}  // namespace

bool isValid(const JSValue& value) { return !value.isNull() && !value.isUndefined(); }

std::optional<bool> safeToBoolean(const JSValue& value) {
    return checked(value, &JSValue::isBoolean, &JSValue::toBool);
}

std::optional<double> safeToNumber(const JSValue& value) {
    return checked(value, &JSValue::isNumber, &JSValue::toNumber);
}

std::optional<std::string> safeToString(const JSValue& value) {
    return checked(value, &JSValue::isString, &JSValue::toString);
}

std::optional<Value::Dictionary> safeToDictionary(const JSValue& value) {
    return checked(value, &JSValue::isObject, &JSValue::toDictionary);
}

std::optional<Value::Array> safeToArray(const JSValue& value) {
    return checked(value, &JSValue::isArray, &JSValue::toArray);
}

std::optional<Value> safeToObject(const JSValue& value) {
    return checked(value, &JSValue::isObject, &JSValue::toObject);
}

}  // namespace zqcore
