#pragma once

#include <memory>
#include <utility>

#include "Platform/Base/Value.h"
#include "Platform/Foundation/JSON/JSONEncoder.h"

namespace zqcore {

/// Any generic value, or an encodable model in the place of one. Threads: a value; a model that it holds is
/// shared with its owner and must not change while it is encoded. Lifetime: it keeps its model.
class GenericValue final {
  public:
    GenericValue(Value value) noexcept : value_(std::move(value)) {}
    template <JSONRecord T>
    GenericValue(std::shared_ptr<T> model) noexcept
        : model_(std::move(model)), type_(model_ ? &jsonTypeInfo<T>() : nullptr) {}

    /// Null pointers for a plain value.
    [[nodiscard]] const void* model() const noexcept { return model_.get(); }
    [[nodiscard]] const JSONTypeInfo* modelType() const noexcept { return type_; }
    [[nodiscard]] const Value& value() const noexcept { return value_; }

  private:
    Value value_;
    std::shared_ptr<const void> model_;
    const JSONTypeInfo* type_ = nullptr;
};

}  // namespace zqcore
