#pragma once

#include <concepts>
#include <functional>
#include <memory>
#include <utility>

namespace zqcore {

/// Calls `block` with the object and gives the object back: a thing is configured where it is made. What the
/// block throws passes through; a null pointer is given back untouched. Any thread.
///
///     const auto label = then(NSTextField::make(), [](NSTextField& it) { it.setEditable(false); });
template <class T, std::invocable<T&> Block>
std::shared_ptr<T> then(std::shared_ptr<T> object, Block&& block) {
    if (object) std::invoke(std::forward<Block>(block), *object);
    return object;
}

}  // namespace zqcore
