#include "Classes/Core/Category/NSObjectExt.h"

#include <utility>

#include "Classes/Core/Utility/ObjectAssociation.h"

namespace zqcore {

namespace {

template <class T>
using Slot = ObjectAssociation<T>;

const Slot<std::shared_ptr<NSObject>> kAssociatedObjectKey_extStrongObj;
const Slot<std::weak_ptr<NSObject>> kAssociatedObjectKey_extWeakObj;
const Slot<Value> kAssociatedObjectKey_extCopyObj;
const Slot<std::shared_ptr<Value::Array>> kAssociatedObjectKey_extArray;
const Slot<std::shared_ptr<Value::Dictionary>> kAssociatedObjectKey_extDictionary;
const Slot<std::shared_ptr<NSHashTable<NSObject>>> kAssociatedObjectKey_extHash;
const Slot<std::shared_ptr<NSMapTable<Value, NSObject>>> kAssociatedObjectKey_extMap;

/// What is in the slot, a new one at the first read.
template <class T>
std::shared_ptr<T> lazily(const Slot<std::shared_ptr<T>>& slot, NSObject& object) {
    auto value = slot[object];
    if (!value) {
        value = std::make_shared<T>();
        slot.set(object, value);
    }
    return value;
}

}  // namespace

std::shared_ptr<NSObject> zq_extStrongObj(const NSObject& object) {
    return kAssociatedObjectKey_extStrongObj[object];
}
void setZq_extStrongObj(NSObject& object, std::shared_ptr<NSObject> value) {
    kAssociatedObjectKey_extStrongObj.set(object, std::move(value));
}

std::shared_ptr<NSObject> zq_extWeakObj(const NSObject& object) {
    const auto value = kAssociatedObjectKey_extWeakObj[object];
    return value ? value->lock() : nullptr;
}
void setZq_extWeakObj(NSObject& object, const std::shared_ptr<NSObject>& value) {
    std::optional<std::weak_ptr<NSObject>> weak;
    if (value) weak = value;
    kAssociatedObjectKey_extWeakObj.set(object, std::move(weak));
}

std::optional<Value> zq_extCopyObj(const NSObject& object) { return kAssociatedObjectKey_extCopyObj[object]; }
void setZq_extCopyObj(NSObject& object, std::optional<Value> value) {
    kAssociatedObjectKey_extCopyObj.set(object, std::move(value));
}

std::shared_ptr<Value::Array> zq_extArray(NSObject& object) {
    return lazily(kAssociatedObjectKey_extArray, object);
}
void setZq_extArray(NSObject& object, std::shared_ptr<Value::Array> value) {
    kAssociatedObjectKey_extArray.set(object, std::move(value));
}

std::shared_ptr<Value::Dictionary> zq_extDictionary(NSObject& object) {
    return lazily(kAssociatedObjectKey_extDictionary, object);
}
void setZq_extDictionary(NSObject& object, std::shared_ptr<Value::Dictionary> value) {
    kAssociatedObjectKey_extDictionary.set(object, std::move(value));
}

std::shared_ptr<NSHashTable<NSObject>> zq_extHash(NSObject& object) {
    return lazily(kAssociatedObjectKey_extHash, object);
}
void setZq_extHash(NSObject& object, std::shared_ptr<NSHashTable<NSObject>> value) {
    kAssociatedObjectKey_extHash.set(object, std::move(value));
}

std::shared_ptr<NSMapTable<Value, NSObject>> zq_extMap(NSObject& object) {
    return lazily(kAssociatedObjectKey_extMap, object);
}
void setZq_extMap(NSObject& object, std::shared_ptr<NSMapTable<Value, NSObject>> value) {
    kAssociatedObjectKey_extMap.set(object, std::move(value));
}

}  // namespace zqcore
