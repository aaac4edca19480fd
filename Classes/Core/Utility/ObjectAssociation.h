#pragma once

#include <any>
#include <utility>

#include "Classes/Core/Utility/AbsentForm.h"
#include "Platform/Base/NSObject.h"

namespace zqcore {

/// A typed slot on any object. Its own address is the slot's key, so it is a static of who uses the slot and
/// is neither copied nor moved.
/// Threads: a single read or write from any; reading, changing and writing back belongs to the owner's
/// thread. Lifetime: what is in the slot goes with the object, after the object's own fields. Failure: none.
///
///     ObjectAssociation<std::string> nickname;
///     nickname.set(*view, "left");
///     nickname[*view];                                             // "left"; absent for every other object
template <class Value>
class ObjectAssociation final {
  public:
    ObjectAssociation() = default;
    ObjectAssociation(const ObjectAssociation&) = delete;
    ObjectAssociation& operator=(const ObjectAssociation&) = delete;

    /// A copy of the value in the object's slot, or absent.
    [[nodiscard]] AbsentForm<Value> operator[](const NSObject& object) const {
        std::any stored = object.associatedValue(this);
        auto* value = std::any_cast<PresentForm<Value>>(&stored);
        return value ? AbsentForm<Value>(std::move(*value)) : AbsentForm<Value>();
    }

    /// Stores the value; an absent one empties the slot.
    void set(NSObject& object, AbsentForm<Value> value) const {
        object.setAssociatedValue(this, value ? std::any(presentValue(std::move(value))) : std::any());
    }
};

}  // namespace zqcore
