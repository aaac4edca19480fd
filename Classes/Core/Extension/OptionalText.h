#pragma once

#include <charconv>
#include <concepts>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <utility>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSStringFromClass.h"

namespace zqcore {

// Texts of values for log lines.
//
//     ZQLogInfo([&] { return "selected " + orNil(selection); });          // "selected (nil)"
//     const auto name = orElse(client.name, [&] { return defaultName(); });
//
// An optional value is a std::optional, or a pointer of any kind. Threads: pure, any thread. Failure: none.

namespace optional_text {

[[nodiscard]] ZQ_EXPORT std::string describeReal(double value);

template <class T>
concept Described = requires(const T& value) {
    { value.description() } -> std::convertible_to<std::string>;
};

/// What can be tested for absence and holds a value.
template <class T>
concept Optional = !std::convertible_to<T, std::string_view> && requires(const T& value) {
    static_cast<bool>(value);
    *value;
};

/// The default description of a value: a text as it is, numbers in decimal, "true" and "false", and what a
/// `description()` says.
template <class T>
[[nodiscard]] std::string describe(const T& value) {
    if constexpr (std::convertible_to<const T&, std::string_view>) {
        return std::string(std::string_view(value));
    } else if constexpr (std::same_as<T, bool>) {
        return value ? "true" : "false";
    } else if constexpr (std::integral<T>) {
        return std::to_string(value);
    } else if constexpr (std::floating_point<T>) {
        // Shortest in its own precision first: 0.1f is no long double fraction.
        char digits[64];
        const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
        double read = 0;
        std::from_chars(digits, end, read);
        return describeReal(read);
    } else {
        static_assert(Described<T>, "give the type a description()");
        return std::string(value.description());
    }
}

}  // namespace optional_text

/// The description of the value in `value`, or `placeholder` if there is none.
template <optional_text::Optional T>
[[nodiscard]] std::string x(const T& value, std::string_view placeholder) {
    return value ? optional_text::describe(*value) : std::string(placeholder);
}

/// The description of the value in `value`, or "(nil)".
template <optional_text::Optional T>
[[nodiscard]] std::string orNil(const T& value) {
    return x(value, "(nil)");
}

/// The description of the value in `value`, or the text that `makeText` gives, which is called only then.
template <optional_text::Optional T, std::invocable MakeText>
[[nodiscard]] std::string orElse(const T& value, MakeText&& makeText) {
    return value ? optional_text::describe(*value)
                 : std::string(std::invoke(std::forward<MakeText>(makeText)));
}

/// Calls `action` with `value` and gives the value back.
template <class T, std::invocable<T&> Action>
[[nodiscard]] T tap(T value, Action&& action) {
    std::invoke(std::forward<Action>(action), value);
    return value;
}

/// The name of the object's class.
template <class T>
[[nodiscard]] std::string fullType(const T& object) {
    return NSStringFromClass(typeid(object));
}
template <class T>
[[nodiscard]] std::string fullType(const std::shared_ptr<T>& object) {
    return object ? NSStringFromClass(typeid(*object)) : NSStringFromClass(typeid(T));
}

/// The object's address, "%p".
template <class T>
[[nodiscard]] std::string address(const T& object) {
    char text[24];
    std::snprintf(text, sizeof text, "%p", static_cast<const void*>(std::addressof(object)));
    return text;
}
template <class T>
[[nodiscard]] std::string address(const std::shared_ptr<T>& object) {
    char text[24];
    std::snprintf(text, sizeof text, "%p", static_cast<const void*>(object.get()));
    return text;
}

/// "<CLASS: ADDRESS>".
template <class T>
[[nodiscard]] std::string sd(const T& object) {
    return "<" + fullType(object) + ": " + address(object) + ">";
}

}  // namespace zqcore
