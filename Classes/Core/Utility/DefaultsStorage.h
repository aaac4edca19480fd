#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "Classes/Core/Utility/Codable/EnumCodable.h"
#include "Classes/Core/Utility/OptionalTool.h"
#include "Platform/Combine/Subject.h"
#include "Platform/Foundation/NSUserDefaults.h"
#include "Platform/Foundation/ValueCast.h"

namespace zqcore {

/// How a type over a raw value is stored: `rawValue` gives the object, `caseOf` the value for a stored
/// object, or nothing if the object is no raw value of the type. Given for enumerations; others may
/// specialise it.
template <class T>
struct RawRepresentation;

template <EnumCodable E>
struct RawRepresentation<E> {
    static Value rawValue(E value) {
        if (zqEnumInfo(value).raw == EnumInfo::Raw::string) return Value(caseText(value));
        return static_cast<std::int64_t>(value);
    }
    static std::optional<E> caseOf(const Value& object) {
        if (zqEnumInfo(E{}).raw == EnumInfo::Raw::string) {
            const std::string* text = object.asString();
            return text ? caseFromText<E>(*text) : std::nullopt;
        }
        const auto number = exactInt64(object);
        for (const EnumCase& one : zqEnumInfo(E{}).cases) {
            if (number == one.value) return static_cast<E>(one.value);
        }
        return std::nullopt;
    }
};

template <class T>
concept RawRepresentable = requires(const T& value, const Value& object) {
    { RawRepresentation<T>::rawValue(value) } -> std::same_as<Value>;
    { RawRepresentation<T>::caseOf(object) } -> std::same_as<std::optional<T>>;
};

/// One typed setting under one key of a store. It is read once, when this is made; from then on the current
/// value lies in memory, writing goes through to the store and then to the subscribers, and what others
/// change in the store isn't seen. Threads: no lock; a setting belongs to one thread, or its user orders the
/// calls. Subscribers are called on the thread that writes, within the write. Lifetime: a value; its copies
/// share the current value and the subscribers. Failure: none is told. What can't be read gives the default
/// value and stays in the store until the next write.
template <class T>
class DefaultsStorage final {
  public:
    /// What the store is to hold for a value; nothing leaves no object under the key.
    using Serialize = std::function<std::optional<Value>(const T&)>;
    /// The value for a stored object; nothing gives the default value.
    using Deserialize = std::function<std::optional<T>(const Value&)>;

    /// A setting with a form of its own in the store. Without a function on one of the two ways the object is
    /// the value itself, which a type that is no property-list object doesn't have.
    DefaultsStorage(T wrappedValue, std::string key, std::shared_ptr<NSUserDefaults> defaults,
                    Serialize serialize, Deserialize deserialize)
        : key_(std::move(key)),
          defaultValue_(std::move(wrappedValue)),
          defaults_(std::move(defaults)),
          serialize_(std::move(serialize)),
          isOptional_(OptionalTool::isOptional(defaultValue_)) {
        std::optional<T> candidate;
        if (const auto object = defaults_->objectForKey(key_)) {
            candidate = deserialize ? deserialize(*object) : cast(*object);
        }
        state_ = std::make_shared<State>(candidate ? *std::move(candidate) : defaultValue_);
    }

    /// A setting that is stored as itself.
    DefaultsStorage(T wrappedValue, std::string key,
                    std::shared_ptr<NSUserDefaults> defaults) requires(PropertyListObject<T> &&
                                                                       !RawRepresentable<T>)
        : DefaultsStorage(std::move(wrappedValue), std::move(key), std::move(defaults), nullptr, nullptr) {}

    /// A setting that is stored as its raw value. A raw value that names no case reads as the default.
    DefaultsStorage(T wrappedValue, std::string key,
                    std::shared_ptr<NSUserDefaults> defaults) requires RawRepresentable<T>
        : DefaultsStorage(
              std::move(wrappedValue), std::move(key), std::move(defaults),
              [](const T& value) { return std::optional<Value>(RawRepresentation<T>::rawValue(value)); },
              [](const Value& object) { return RawRepresentation<T>::caseOf(object); }) {}

    /// An optional setting over a raw value: `T` is `std::optional<Wrapped>`. A stored raw value that names
    /// no case reads as absent here, not as the default.
    template <RawRepresentable Wrapped>
    requires std::same_as<T, std::optional<Wrapped>> DefaultsStorage(T wrappedValue, std::string key,
                                                                     std::shared_ptr<NSUserDefaults> defaults,
                                                                     std::type_identity<Wrapped> /*type*/)
        : DefaultsStorage(
              std::move(wrappedValue), std::move(key), std::move(defaults),
              [](const T& value) -> std::optional<Value> {
                  if (!value) return std::nullopt;
                  return RawRepresentation<Wrapped>::rawValue(*value);
              },
              [](const Value& object) {
                  return std::optional<T>(std::in_place, RawRepresentation<Wrapped>::caseOf(object));
              }) {}

    [[nodiscard]] const std::string& key() const noexcept { return key_; }
    [[nodiscard]] const T& defaultValue() const noexcept { return defaultValue_; }
    [[nodiscard]] bool isOptional() const noexcept { return isOptional_; }

    /// The current value, from memory. The reference holds until the next write.
    [[nodiscard]] const T& wrappedValue() const noexcept { return state_->current; }

    /// Stores `newValue`, an absent one by removing the key, then tells the subscribers; also if it equals
    /// the current value.
    void setWrappedValue(T newValue) {
        const std::optional<Value> object = serialize_ ? serialize_(newValue) : objectOf(newValue);
        if (isOptional_ && OptionalTool::isNil(newValue)) {
            defaults_->removeObjectForKey(key_);
        } else {
            defaults_->setObject(object.value_or(Value()), key_);
        }
        state_->current = newValue;
        state_->subject->send(newValue);
    }

    /// Lets `change` alter a copy of the current value, then writes the result as `setWrappedValue` does.
    template <std::invocable<T&> F>
    void changeWrappedValue(F change) {
        T value = state_->current;
        std::move(change)(value);
        setWrappedValue(std::move(value));
    }

    /// The current value at once, then every value that is written.
    [[nodiscard]] AnyPublisher<T> projectedValue() const { return AnyPublisher<T>(state_->subject); }

  private:
    // The value is kept beside the subject, which has a lock: a read is a plain load.
    struct State {
        explicit State(T value)
            : current(std::move(value)), subject(std::make_shared<CurrentValueSubject<T>>(current)) {}
        T current;
        std::shared_ptr<CurrentValueSubject<T>> subject;
    };

    static std::optional<T> cast(const Value& object) {
        if constexpr (PropertyListObject<T>) {
            return ObjectCoding<T>::cast(object);
        } else {
            return std::nullopt;
        }
    }
    static std::optional<Value> objectOf(const T& value) {
        if constexpr (PropertyListObject<T>) {
            return ObjectCoding<T>::object(value);
        } else {
            return std::nullopt;
        }
    }

    std::string key_;
    T defaultValue_;
    std::shared_ptr<NSUserDefaults> defaults_;
    Serialize serialize_;
    std::shared_ptr<State> state_;
    bool isOptional_;
};

}  // namespace zqcore
