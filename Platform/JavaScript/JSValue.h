#pragma once

#include <string>

#include "Platform/Base/Value.h"

namespace zqcore::platform {

/// A value of a script: what it is, and what it becomes outside. The conversions convert whatever there is,
/// as the language does; the checked reads of `Classes/Core/Extension/JSValueExtension.h` ask first. Threads:
/// one at a time, together with its script context. Lifetime: it keeps its context. Failure: none.
class JSValue {
  public:
    virtual ~JSValue() = default;

    [[nodiscard]] virtual bool isUndefined() const = 0;
    [[nodiscard]] virtual bool isNull() const = 0;
    [[nodiscard]] virtual bool isBoolean() const = 0;
    [[nodiscard]] virtual bool isNumber() const = 0;
    [[nodiscard]] virtual bool isString() const = 0;
    /// True for arrays and functions too.
    [[nodiscard]] virtual bool isObject() const = 0;
    [[nodiscard]] virtual bool isArray() const = 0;

    [[nodiscard]] virtual bool toBool() const = 0;
    /// NaN for what is no number.
    [[nodiscard]] virtual double toNumber() const = 0;
    [[nodiscard]] virtual std::string toString() const = 0;
    /// The enumerable properties, an array's by index; empty for what is no object. Undefined properties are
    /// left out.
    [[nodiscard]] virtual Value::Dictionary toDictionary() const = 0;
    /// The elements by index, undefined ones as null; empty for what has no length.
    [[nodiscard]] virtual Value::Array toArray() const = 0;
    /// A boolean, number, text, date, array or dictionary; null for null and undefined. An object that
    /// contains itself has null in its own place. So has what lies deeper than 512 levels, and all that comes
    /// after the first million elements.
    [[nodiscard]] virtual Value toObject() const = 0;
};

}  // namespace zqcore::platform
