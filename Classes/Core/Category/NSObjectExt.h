#pragma once

#include <memory>
#include <optional>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"
#include "Platform/Base/Value.h"
#include "Platform/Foundation/NSHashTable.h"
#include "Platform/Foundation/NSMapTable.h"

namespace zqcore {

// Slots that every object has, for what its users want to hang on it. The containers are made and stored at
// the first read. Threads: no lock; the slots belong to the object's thread. Lifetime: what is in them goes
// with the object. Failure: none.

/// An object that this one keeps; null at first.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<NSObject> zq_extStrongObj(const NSObject& object);
ZQ_EXPORT void setZq_extStrongObj(NSObject& object, std::shared_ptr<NSObject> value);

/// An object that this one doesn't keep; null once it has died.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<NSObject> zq_extWeakObj(const NSObject& object);
ZQ_EXPORT void setZq_extWeakObj(NSObject& object, const std::shared_ptr<NSObject>& value);

/// A copy of a value; absent at first.
[[nodiscard]] ZQ_EXPORT std::optional<Value> zq_extCopyObj(const NSObject& object);
ZQ_EXPORT void setZq_extCopyObj(NSObject& object, std::optional<Value> value);

/// Containers that are shared with the slot: what is put in is found at the next read.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<Value::Array> zq_extArray(NSObject& object);
ZQ_EXPORT void setZq_extArray(NSObject& object, std::shared_ptr<Value::Array> value);
[[nodiscard]] ZQ_EXPORT std::shared_ptr<Value::Dictionary> zq_extDictionary(NSObject& object);
ZQ_EXPORT void setZq_extDictionary(NSObject& object, std::shared_ptr<Value::Dictionary> value);
/// Objects that are not kept.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<NSHashTable<NSObject>> zq_extHash(NSObject& object);
ZQ_EXPORT void setZq_extHash(NSObject& object, std::shared_ptr<NSHashTable<NSObject>> value);
/// Objects that are not kept, under keys that are.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<NSMapTable<Value, NSObject>> zq_extMap(NSObject& object);
ZQ_EXPORT void setZq_extMap(NSObject& object, std::shared_ptr<NSMapTable<Value, NSObject>> value);

}  // namespace zqcore
