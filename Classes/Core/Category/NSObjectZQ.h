#pragma once

#include <memory>
#include <string>

#include "Classes/Core/Extension/OptionalText.h"
#include "Platform/Base/NSObject.h"

namespace zqcore {

/// The object if it is of class `T` or of one below, otherwise null.
template <class T, class Object>
[[nodiscard]] std::shared_ptr<T> zq_toClass(const std::shared_ptr<Object>& object) {
    return std::dynamic_pointer_cast<T>(object);
}

/// The object's address, "%p".
[[nodiscard]] inline std::string zq_address(const NSObject& object) { return address(object); }

}  // namespace zqcore
