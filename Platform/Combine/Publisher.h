#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <type_traits>
#include <utility>

#include "Platform/Combine/AnyCancellable.h"
#include "Platform/Dispatch/DispatchQueue.h"

namespace zqcore::platform {

template <class T>
class AnyPublisher;

/// Something that gives values of type `T`, for ever and without failure, to who subscribed.
/// Threads: subscribing from any; values come on the thread that sends them unless `receive` says where.
/// Lifetime: a subscription ends with its `AnyCancellable`; it doesn't keep what sends the values. After a
/// cancel on the delivering thread or queue no value follows; elsewhere one may be under way.
template <class T>
class Publisher {
  public:
    using Output = T;
    using Sink = std::function<void(const T&)>;

    virtual ~Publisher() = default;
    [[nodiscard]] virtual AnyCancellable sink(Sink receiveValue) = 0;
};

/// A publisher whose kind is hidden. Threads: a value, shared by its copies.
template <class T>
class AnyPublisher final {
  public:
    using Output = T;
    using Sink = typename Publisher<T>::Sink;

    explicit AnyPublisher(std::shared_ptr<Publisher<T>> publisher) : publisher_(std::move(publisher)) {}

    [[nodiscard]] AnyCancellable sink(Sink receiveValue) const {
        return publisher_->sink(std::move(receiveValue));
    }

    /// The same values, each submitted to `queue`, in order; also when the sender is on it already.
    [[nodiscard]] AnyPublisher receive(std::shared_ptr<DispatchQueue> queue) const;
    /// The values that `transform` makes of these.
    template <class F>
    [[nodiscard]] auto map(F transform) const -> AnyPublisher<std::invoke_result_t<F&, const T&>>;

  private:
    std::shared_ptr<Publisher<T>> publisher_;
};

namespace combine {

/// A publisher from a function that subscribes.
template <class T, class Subscribe>
class FunctionPublisher final : public Publisher<T> {
  public:
    explicit FunctionPublisher(Subscribe subscribe) : subscribe_(std::move(subscribe)) {}
    [[nodiscard]] AnyCancellable sink(typename Publisher<T>::Sink receiveValue) override {
        return subscribe_(std::move(receiveValue));
    }

  private:
    Subscribe subscribe_;
};

template <class T, class Subscribe>
[[nodiscard]] AnyPublisher<T> makePublisher(Subscribe subscribe) {
    return AnyPublisher<T>(std::make_shared<FunctionPublisher<T, Subscribe>>(std::move(subscribe)));
}

/// A receiver that can be cut off while values for it are on their way.
template <class T>
struct Receiver {
    std::function<void(const T&)> sink;
    std::atomic<bool> cancelled{false};
};

}  // namespace combine

template <class T>
AnyPublisher<T> AnyPublisher<T>::receive(std::shared_ptr<DispatchQueue> queue) const {
    return combine::makePublisher<T>([upstream = *this, queue = std::move(queue)](Sink sink) {
        auto receiver = std::make_shared<combine::Receiver<T>>();
        receiver->sink = std::move(sink);
        AnyCancellable subscription = upstream.sink([receiver, queue](const T& value) {
            queue->async([receiver, value] {
                if (!receiver->cancelled) receiver->sink(value);
            });
        });
        return AnyCancellable([receiver, subscription = std::move(subscription)]() mutable {
            receiver->cancelled = true;
            subscription.cancel();
        });
    });
}

template <class T>
template <class F>
auto AnyPublisher<T>::map(F transform) const -> AnyPublisher<std::invoke_result_t<F&, const T&>> {
    using Result = std::invoke_result_t<F&, const T&>;
    return combine::makePublisher<Result>([upstream = *this, transform = std::move(transform)](
                                              typename Publisher<Result>::Sink sink) {
        return upstream.sink([sink = std::move(sink), transform](const T& value) { sink(transform(value)); });
    });
}

}  // namespace zqcore::platform
