#pragma once

#include <string_view>

namespace zqcore::platform {

/// The full name of a type as the compiler writes it ("zqcore::ASError::Code"), for log lines. Costs nothing
/// at run time. Any thread.
template <class T>
[[nodiscard]] constexpr std::string_view fullTypeName() noexcept {
    // GCC: "... fullTypeName() [with T = X; std::string_view = ...]", Clang: "... fullTypeName() [T = X]".
    std::string_view text = __PRETTY_FUNCTION__;
    text.remove_prefix(text.find("T = ") + 4);
    const std::string_view closing = text.find(';') == std::string_view::npos ? "]" : ";";
    return text.substr(0, closing == ";" ? text.find(';') : text.rfind(']'));
}

}  // namespace zqcore::platform
