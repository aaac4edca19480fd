#pragma once

#include <memory>
#include <optional>
#include <source_location>
#include <string>
#include <string_view>

#include "Classes/Core/Utility/Codable/GenericValue.h"
#include "Platform/Base/Data.h"
#include "Platform/Foundation/JSON/JSONDecoder.h"

namespace zqcore {

/// What decoding gives: a record is shared by reference, every other type is a value.
template <class T>
struct JSONDecoded {
    using Result = std::optional<T>;
};
template <JSONRecord T>
struct JSONDecoded<T> {
    using Result = std::shared_ptr<T>;
};

/// The one place where models and JSON meet. Text is UTF-8; `where` is the calling code, for the log line.
/// Threads: any, no state.
/// Failure: one line at error level, which names the field, and the absent result; nothing throws.
class ZQ_EXPORT JSONTool final {
  public:
    JSONTool() = delete;

    using Where = std::source_location;

    template <JSONCodable T>
    [[nodiscard]] static std::optional<Data> encodeToData(const T& model,
                                                          const Where& where = Where::current()) {
        return encodeModel(&model, jsonTypeInfo<T>(), where);
    }
    /// A value whose top level is an array or a dictionary. A model, a plain text or a number is encodable by
    /// itself: it is told by a line in the log and written as the model operation writes it.
    [[nodiscard]] static std::optional<Data> encodeToData(const GenericValue& value,
                                                          const Where& where = Where::current());
    [[nodiscard]] static std::optional<Data> encodeToData(const Value& value,
                                                          const Where& where = Where::current());
    // An array of generic values is a generic value, not a model that is a list.
    [[nodiscard]] static std::optional<Data> encodeToData(const Value::Array& value,
                                                          const Where& where = Where::current()) {
        return encodeToData(Value(value), where);
    }

    template <JSONCodable T>
    [[nodiscard]] static std::optional<std::string> encodeToString(const T& model,
                                                                   const Where& where = Where::current()) {
        return textOf(encodeModel(&model, jsonTypeInfo<T>(), where));
    }
    [[nodiscard]] static std::optional<std::string> encodeToString(const GenericValue& value,
                                                                   const Where& where = Where::current()) {
        return textOf(encodeToData(value, where));
    }
    [[nodiscard]] static std::optional<std::string> encodeToString(const Value& value,
                                                                   const Where& where = Where::current()) {
        return textOf(encodeToData(value, where));
    }
    [[nodiscard]] static std::optional<std::string> encodeToString(const Value::Array& value,
                                                                   const Where& where = Where::current()) {
        return textOf(encodeToData(value, where));
    }

    template <JSONCodable T>
    [[nodiscard]] static std::optional<Value> encodeToJSONObject(const T& model,
                                                                 const Where& where = Where::current()) {
        const auto data = encodeModel(&model, jsonTypeInfo<T>(), where);
        return data ? decodeToJSONObject(*data, where) : std::nullopt;
    }

    /// `JSONTool::decodeToModel<ASClient>(text)`: a shared pointer for records, an optional for other types.
    template <JSONCodable T>
    [[nodiscard]] static JSONDecoded<T>::Result decodeToModel(std::string_view text,
                                                              const Where& where = Where::current()) {
        return decoded<T>([&](void* model) { return decodeText(text, model, jsonTypeInfo<T>(), where); });
    }
    template <JSONCodable T>
    [[nodiscard]] static JSONDecoded<T>::Result decodeToModel(const Data& data,
                                                              const Where& where = Where::current()) {
        return decoded<T>(
            [&](void* model) { return decodeBytes(data.view(), model, jsonTypeInfo<T>(), where); });
    }
    template <JSONCodable T>
    [[nodiscard]] static JSONDecoded<T>::Result decodeToModel(const GenericValue& value,
                                                              const Where& where = Where::current()) {
        const auto data = encodeToData(value, where);
        return data ? decodeToModel<T>(*data, where) : typename JSONDecoded<T>::Result{};
    }

    /// Top-level values that are neither array nor object are refused.
    [[nodiscard]] static std::optional<Value> decodeToJSONObject(std::string_view text,
                                                                 const Where& where = Where::current());
    [[nodiscard]] static std::optional<Value> decodeToJSONObject(const Data& data,
                                                                 const Where& where = Where::current());

    // The operations without their types.
    [[nodiscard]] static std::optional<Data> encodeModel(const void* model, const JSONTypeInfo& type,
                                                         const Where& where);
    [[nodiscard]] static bool decodeText(std::string_view text, void* model, const JSONTypeInfo& type,
                                         const Where& where);
    [[nodiscard]] static bool decodeBytes(std::string_view bytes, void* model, const JSONTypeInfo& type,
                                          const Where& where);

    /// What the writers give is UTF-8 by construction, so bytes become text by a move.
    [[nodiscard]] static std::optional<std::string> textOf(std::optional<Data> data) {
        return data ? std::optional<std::string>(std::move(*data).take()) : std::nullopt;
    }

  private:
    template <class T, class Decode>
    static JSONDecoded<T>::Result decoded(const Decode& decode) {
        if constexpr (JSONRecord<T>) {
            auto model = std::make_shared<T>();
            return decode(model.get()) ? model : nullptr;
        } else {
            std::optional<T> model(std::in_place);
            if (!decode(&*model)) model.reset();
            return model;
        }
    }
};

/// Nothing of its own; the base of a model that has no other.
class JSONModelRoot {};

/// The default operations of a model that names its fields by `ZQ_FIELDS`: `class ASClient : public
/// JSONModel<ASClient>`. `Base` is what the model derives from beside. Each forwards to `JSONTool`.
template <class Self, class Base = JSONModelRoot>
class JSONModel : public Base {
  public:
    using Base::Base;
    using Where = std::source_location;

    /// A new record with all its fields absent.
    [[nodiscard]] static std::shared_ptr<Self> make() { return std::make_shared<Self>(); }

    [[nodiscard]] std::optional<Data> encodeToJSONData(const Where& where = Where::current()) const {
        return JSONTool::encodeToData(self(), where);
    }
    // It overrides the base's where there is one. NOLINTNEXTLINE(modernize-use-override)
    [[nodiscard]] std::optional<std::string> encodeToJSONString(const Where& where = Where::current()) const {
        return JSONTool::encodeToString(self(), where);
    }
    [[nodiscard]] std::optional<Value> encodeToJSONObject(const Where& where = Where::current()) const {
        return JSONTool::encodeToJSONObject(self(), where);
    }
    /// An equal record that shares nothing with this one; null if it can't be written or read.
    [[nodiscard]] std::shared_ptr<Self> deepCopy(const Where& where = Where::current()) const {
        const auto data = JSONTool::encodeToData(self(), where);
        return data ? JSONTool::decodeToModel<Self>(*data, where) : nullptr;
    }

    [[nodiscard]] static std::shared_ptr<Self> fromJSONString(std::string_view text,
                                                              const Where& where = Where::current()) {
        return JSONTool::decodeToModel<Self>(text, where);
    }
    [[nodiscard]] static std::shared_ptr<Self> fromJSONData(const Data& data,
                                                            const Where& where = Where::current()) {
        return JSONTool::decodeToModel<Self>(data, where);
    }
    [[nodiscard]] static std::shared_ptr<Self> fromJSONObject(const GenericValue& value,
                                                              const Where& where = Where::current()) {
        return JSONTool::decodeToModel<Self>(value, where);
    }

  private:
    [[nodiscard]] const Self& self() const noexcept { return static_cast<const Self&>(*this); }
};

}  // namespace zqcore
