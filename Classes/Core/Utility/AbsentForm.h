#pragma once

#include <memory>
#include <optional>
#include <utility>

namespace zqcore {

namespace absent {

template <class T>
struct Form {
    using Present = T;
    using Type = std::optional<T>;
};
template <class T>
struct Form<std::optional<T>> {
    using Present = T;
    using Type = std::optional<T>;
};
template <class T>
struct Form<std::shared_ptr<T>> {
    using Present = std::shared_ptr<T>;
    using Type = std::shared_ptr<T>;
};

}  // namespace absent

/// The type in which a value of type `T` may be absent: a shared pointer and an optional value are that
/// already, any other type becomes an optional one.
template <class T>
using AbsentForm = typename absent::Form<T>::Type;

/// The type of the value when it is there: an optional one without its wrapping.
template <class T>
using PresentForm = typename absent::Form<T>::Present;

/// The value inside `form`, which must be there.
template <class T>
[[nodiscard]] T presentValue(std::optional<T> form) {
    return *std::move(form);
}
template <class T>
[[nodiscard]] std::shared_ptr<T> presentValue(std::shared_ptr<T> form) {
    return form;
}

}  // namespace zqcore
