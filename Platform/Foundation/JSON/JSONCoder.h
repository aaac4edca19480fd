#pragma once

#include <concepts>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Base/CGGeometry.h"
#include "Platform/Base/Value.h"
#include "Platform/Foundation/JSON/JSONRecord.h"

// The coders of the field types that the platform's own coding knows. Each is thin over the reader and
// writer.
namespace zqcore::platform {

template <>
struct JSONCoder<bool> {
    static bool decode(JSONReader& reader, bool& out) { return reader.readBool(out); }
    static void encode(JSONWriter& writer, bool value) { writer.boolean(value); }
    static std::string typeText() { return "boolean"; }
};

template <std::integral T>
requires(!std::same_as<T, bool> && !std::same_as<T, char>) struct JSONCoder<T> {
    static bool decode(JSONReader& reader, T& out) {
        using Wide = std::conditional_t<std::signed_integral<T>, std::int64_t, std::uint64_t>;
        Wide wide = 0;
        if constexpr (std::signed_integral<T>) {
            if (!reader.readInt64(wide)) return false;
        } else {
            if (!reader.readUInt64(wide)) return false;
        }
        if (!std::in_range<T>(wide)) {
            return reader.fail(JSONError::Kind::outOfRange, std::to_string(wide) + " doesn't fit the field");
        }
        out = static_cast<T>(wide);
        return true;
    }
    static void encode(JSONWriter& writer, T value) {
        if constexpr (std::signed_integral<T>) {
            writer.integer(value);
        } else {
            writer.unsignedInteger(value);
        }
    }
    static std::string typeText() { return "integer"; }
};

template <>
struct JSONCoder<double> {
    static bool decode(JSONReader& reader, double& out) { return reader.readDouble(out); }
    static void encode(JSONWriter& writer, double value) { writer.real(value); }
    static std::string typeText() { return "number"; }
};

template <>
struct JSONCoder<std::string> {
    static bool decode(JSONReader& reader, std::string& out) { return reader.readString(out); }
    static void encode(JSONWriter& writer, const std::string& value) { writer.string(value); }
    static std::string typeText() { return "string"; }
};

template <>
struct JSONCoder<Value> {
    static bool decode(JSONReader& reader, Value& out) { return reader.readValue(out); }
    static void encode(JSONWriter& writer, const Value& value) { writer.value(value); }
    static std::string typeText() { return "any"; }
};

/// An array of two numbers, x then y; further elements are passed.
template <>
struct ZQ_EXPORT JSONCoder<CGPoint> {
    static bool decode(JSONReader& reader, CGPoint& out);
    static void encode(JSONWriter& writer, const CGPoint& value);
    static std::string typeText() { return "array of two numbers"; }
};

/// A record by value. Written and read by its field list.
template <JSONRecord T>
struct JSONCoder<T> {
    static bool decode(JSONReader& reader, T& out) { return decodeRecord(reader, &out, recordInfo<T>()); }
    static void encode(JSONWriter& writer, const T& value) { encodeRecord(writer, &value, recordInfo<T>()); }
    static std::string typeText() { return "object"; }
    static const JSONRecordInfo* nested() { return &recordInfo<T>(); }
};

namespace jsondetail {

template <class Inner>
struct ForwardNested {
    static const JSONRecordInfo* nested() {
        if constexpr (requires { JSONCoder<Inner>::nested(); }) {
            return JSONCoder<Inner>::nested();
        } else {
            return nullptr;
        }
    }
};

}  // namespace jsondetail

template <class T>
struct JSONCoder<std::optional<T>> : jsondetail::ForwardNested<T> {
    static bool isAbsent(const std::optional<T>& value) noexcept { return !value; }
    static bool decode(JSONReader& reader, std::optional<T>& out) {
        // Read into place, so that a large text is never moved or copied on its way.
        if (JSONCoder<T>::decode(reader, out.emplace())) return true;
        out.reset();
        return false;
    }
    static void encode(JSONWriter& writer, const std::optional<T>& value) {
        if (value) JSONCoder<T>::encode(writer, *value);
    }
    static std::string typeText() { return JSONCoder<T>::typeText(); }
};

template <class T>
struct JSONCoder<std::shared_ptr<T>> : jsondetail::ForwardNested<T> {
    static bool isAbsent(const std::shared_ptr<T>& value) noexcept { return !value; }
    static bool decode(JSONReader& reader, std::shared_ptr<T>& out) {
        auto made = std::make_shared<T>();
        if (!JSONCoder<T>::decode(reader, *made)) return false;
        out = std::move(made);
        return true;
    }
    static void encode(JSONWriter& writer, const std::shared_ptr<T>& value) {
        if (value) JSONCoder<T>::encode(writer, *value);
    }
    static std::string typeText() { return JSONCoder<T>::typeText(); }
};

/// A null among the elements fails, as does an element of another kind.
template <class T>
struct JSONCoder<std::vector<T>> : jsondetail::ForwardNested<T> {
    static bool decode(JSONReader& reader, std::vector<T>& out) {
        if (!reader.beginArray()) return false;
        JSONReader::PathScope path(reader);
        for (;;) {
            path.setIndex(out.size());
            const auto step = reader.nextElement();
            if (step == JSONReader::Step::end) return true;
            if (step == JSONReader::Step::failed) return false;
            if constexpr (std::same_as<T, bool>) {
                bool element = false;
                if (!JSONCoder<bool>::decode(reader, element)) return false;
                out.push_back(element);
            } else {
                if (!JSONCoder<T>::decode(reader, out.emplace_back())) return false;
            }
        }
    }
    static void encode(JSONWriter& writer, const std::vector<T>& value) {
        if (!writer.beginArray()) return;
        JSONWriter::PathScope path(writer);
        std::size_t index = 0;
        for (const auto& element : value) {
            path.setIndex(index++);
            writer.element();
            if constexpr (jsondetail::MayBeAbsent<T>) {
                if (JSONCoder<T>::isAbsent(element)) {
                    if constexpr (requires { JSONCoder<T>::encodeAbsent(writer); }) {
                        JSONCoder<T>::encodeAbsent(writer);
                        continue;
                    }
                    writer.fail("an absent element");
                }
            }
            JSONCoder<T>::encode(writer, element);
        }
        writer.endArray();
    }
    static std::string typeText() { return "array of " + JSONCoder<T>::typeText(); }
};

}  // namespace zqcore::platform
