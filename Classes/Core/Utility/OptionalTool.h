#pragma once

#include <optional>

namespace zqcore {

/// Tells optional values from others in generic code. Threads: any. Failure: none.
class OptionalTool final {
  public:
    OptionalTool() = delete;

    /// Whether the value's type is an optional one.
    template <class T>
    [[nodiscard]] static constexpr bool isOptional(const T& /*value*/) noexcept {
        return false;
    }
    template <class T>
    [[nodiscard]] static constexpr bool isOptional(const std::optional<T>& /*value*/) noexcept {
        return true;
    }

    /// Whether the value is the absent one; false for every value of a type that isn't optional.
    template <class T>
    [[nodiscard]] static constexpr bool isNil(const T& /*value*/) noexcept {
        return false;
    }
    template <class T>
    [[nodiscard]] static constexpr bool isNil(const std::optional<T>& value) noexcept {
        return !value.has_value();
    }
};

}  // namespace zqcore
