#pragma once

#include <concepts>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"
#include "Platform/Base/Selector.h"

namespace zqcore {

/// What performs an action on a target, as controls do: both can be set, and set to nothing. The target is
/// held weakly by such a class.
template <class T>
concept ZQTargetBindable = std::derived_from<T, NSObject> &&
    requires(T& receiver, std::shared_ptr<NSObject> target, std::optional<Selector> action) {
    receiver.setTarget(std::move(target));
    receiver.setAction(action);
};

namespace target_binding {

/// The one target object in the receiver's slot, made at the first call; from now on it performs `closure`.
[[nodiscard]] ZQ_EXPORT std::shared_ptr<NSObject> bind(NSObject& receiver, std::function<void()> closure);
/// Empties the slot.
ZQ_EXPORT void unbind(NSObject& receiver);
/// What the target object answers to.
[[nodiscard]] ZQ_EXPORT Selector performAction() noexcept;

}  // namespace target_binding

/// Lets the receiver call `action` with itself in the place of a target's operation. A second call replaces
/// the function; an empty one clears the receiver's target and action. The receiver keeps the function, and
/// the function doesn't keep the receiver. Threads: the receiver's; no lock. Failure: none.
template <ZQTargetBindable T>
void zq_bindAction(const std::shared_ptr<T>& receiver, std::type_identity_t<std::function<void(T&)>> action) {
    if (!action) {
        target_binding::unbind(*receiver);
        receiver->setTarget(nullptr);
        receiver->setAction(std::nullopt);
        return;
    }
    auto closure = [weak = std::weak_ptr<T>(receiver), action = std::move(action)] {
        if (const auto held = weak.lock()) action(*held);
    };
    receiver->setTarget(target_binding::bind(*receiver, std::move(closure)));
    receiver->setAction(target_binding::performAction());
}

}  // namespace zqcore
