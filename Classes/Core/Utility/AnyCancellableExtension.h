#pragma once

#include <memory>
#include <vector>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSObject.h"
#include "Platform/Combine/AnyCancellable.h"

namespace zqcore {

// Subscriptions that live as long as an owner object.
//
//     tieToLifetime(setting.projectedValue().sink(show), view);   // kept, and cancelled when the view dies
//
// A subscription has one tie at a time. Threads: no lock; ties belong to their owner's thread. Failure: none;
// an empty subscription can't be tied.

/// Ties the subscription to `owner`, which keeps it from now on, and gives it back. A tie to another owner
/// ends without cancelling. Without an owner it is cancelled at once.
ZQ_EXPORT AnyCancellable tieToLifetime(AnyCancellable subscription, const std::shared_ptr<NSObject>& owner);

/// Ends the tie and leaves the subscription running, as long as someone else keeps it.
ZQ_EXPORT void removeLifetimeTie(const AnyCancellable& subscription);

/// The subscriptions that are tied to `owner` now, in the order of their ties.
[[nodiscard]] ZQ_EXPORT std::vector<AnyCancellable> subscriptionsTieToLifetime(const NSObject& owner);

/// Ends and cancels all of them, in that order.
ZQ_EXPORT void cancelSubscriptionsTieToLifetime(const NSObject& owner);

}  // namespace zqcore
