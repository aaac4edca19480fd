#pragma once

#include "Platform/Combine/Publisher.h"
#include "Platform/Dispatch/DispatchQueue.h"

namespace zqcore {

/// The same publisher, delivering on the main queue: each value hops there, also from the main thread, and
/// the order stays. Threads: subscribing from any.
template <class T>
[[nodiscard]] AnyPublisher<T> receiveOnMainQueue(const AnyPublisher<T>& publisher) {
    return publisher.receive(DispatchQueue::main());
}

}  // namespace zqcore
