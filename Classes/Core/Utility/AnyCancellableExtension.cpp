#include "Classes/Core/Utility/AnyCancellableExtension.h"

#include <utility>

#include "Classes/Core/Utility/LifetimeAssociation.h"
#include "Classes/Core/Utility/ObjectAssociation.h"

namespace zqcore {

namespace {

/// The subscription's own slot, with its one tie.
const ObjectAssociation<std::shared_ptr<LifetimeAssociation>> tie;

void endTieSilently(const NSObject& subscription) {
    if (const auto association = tie[subscription]) association->invalidateSilently();
}

}  // namespace

AnyCancellable tieToLifetime(AnyCancellable subscription, const std::shared_ptr<NSObject>& owner) {
    const auto& object = subscription.object();
    if (!object) return subscription;
    endTieSilently(*object);
    auto association = LifetimeAssociation::make(
        object, owner, [weak = std::weak_ptr(object)] { AnyCancellable::ofObject(weak.lock()).cancel(); });
    tie.set(*object, std::move(association));
    return subscription;
}

void removeLifetimeTie(const AnyCancellable& subscription) {
    const auto& object = subscription.object();
    if (!object) return;
    endTieSilently(*object);
    tie.set(*object, nullptr);
}

std::vector<AnyCancellable> subscriptionsTieToLifetime(const NSObject& owner) {
    std::vector<AnyCancellable> subscriptions;
    for (auto& object : LifetimeAssociation::objectsTiedTo(owner)) {
        auto subscription = AnyCancellable::ofObject(std::move(object));
        if (subscription.object()) subscriptions.push_back(std::move(subscription));
    }
    return subscriptions;
}

void cancelSubscriptionsTieToLifetime(const NSObject& owner) {
    for (const auto& subscription : subscriptionsTieToLifetime(owner)) {
        removeLifetimeTie(subscription);
        subscription.cancel();
    }
}

}  // namespace zqcore
