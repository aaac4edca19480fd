#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <variant>

#include "Platform/Combine/RACDisposable.h"
#include "Platform/Combine/Subject.h"
#include "Platform/Dispatch/DispatchQueue.h"

namespace zqcore::platform {

/// The value of a signal that only completes.
using RACUnit = std::monostate;

/// Who takes the events of a signal: values, and at the end perhaps a completion. After the completion, or
/// once its disposable is disposed, it takes nothing more.
template <class T>
class RACSubscriber final {
  public:
    using Next = std::function<void(const T&)>;
    using Completed = std::function<void()>;

    RACSubscriber(Next next, Completed completed)
        : disposable_(RACDisposable::make()), next_(std::move(next)), completed_(std::move(completed)) {}

    void sendNext(const T& value) const {
        if (next_ && !disposable_->isDisposed()) next_(value);
    }
    void sendCompleted() const {
        if (disposable_->dispose() && completed_) completed_();
    }
    [[nodiscard]] const std::shared_ptr<RACDisposable>& disposable() const noexcept { return disposable_; }

  private:
    std::shared_ptr<RACDisposable> disposable_;
    Next next_;
    Completed completed_;
};

/// Something that gives values and may come to an end: a publisher with completion.
/// Threads: subscribing from any; events come on the thread that sends them. Lifetime: a subscription lives
/// as long as its source, until it completes or is disposed; dropping what `subscribe` gave does not end it.
/// Failure: none.
template <class T>
class RACSignal final {
  public:
    using Subscriber = std::shared_ptr<RACSubscriber<T>>;
    /// Begins to send to a subscriber; what is to be undone at the end goes to the subscriber's disposable.
    using Start = std::function<void(const Subscriber&)>;

    explicit RACSignal(Start start) : start_(std::make_shared<const Start>(std::move(start))) {}
    /// The current value at once, on the subscribing thread, then each that is set.
    [[nodiscard]] static RACSignal valuesOf(std::shared_ptr<CurrentValueSubject<T>> subject);

    std::shared_ptr<RACDisposable> subscribe(typename RACSubscriber<T>::Next next,
                                             typename RACSubscriber<T>::Completed completed) const {
        const auto subscriber = std::make_shared<RACSubscriber<T>>(std::move(next), std::move(completed));
        (*start_)(subscriber);
        return subscriber->disposable();
    }
    std::shared_ptr<RACDisposable> subscribeNext(typename RACSubscriber<T>::Next next) const {
        return subscribe(std::move(next), {});
    }
    std::shared_ptr<RACDisposable> subscribeCompleted(typename RACSubscriber<T>::Completed completed) const {
        return subscribe({}, std::move(completed));
    }

    /// The same until `trigger` sends a value or completes, which completes this one. The trigger is
    /// subscribed first, so that one that has come already lets nothing through.
    template <class U>
    [[nodiscard]] RACSignal takeUntil(RACSignal<U> trigger) const;
    /// Leaves out each value that equals the one before it; the first always passes.
    [[nodiscard]] RACSignal distinctUntilChanged() const;
    /// Events on the main thread: within the sending call if that is on it and nothing is on its way, else by
    /// the main queue, in order.
    [[nodiscard]] RACSignal deliverOnMainThread() const;

  private:
    /// Subscribes on behalf of `subscriber`, whose end is also this subscription's.
    void forward(const Subscriber& subscriber, typename RACSubscriber<T>::Next next,
                 typename RACSubscriber<T>::Completed completed) const {
        const auto inner = std::make_shared<RACSubscriber<T>>(std::move(next), std::move(completed));
        subscriber->disposable()->add(inner->disposable());
        (*start_)(inner);
    }

    std::shared_ptr<const Start> start_;
};

template <class T>
RACSignal<T> RACSignal<T>::valuesOf(std::shared_ptr<CurrentValueSubject<T>> subject) {
    return RACSignal([subject = std::move(subject)](const Subscriber& subscriber) {
        const auto subscription =
            subject->sink([subscriber](const T& value) { subscriber->sendNext(value); });
        subscriber->disposable()->add([subscription] { subscription.cancel(); });
    });
}

template <class T>
template <class U>
RACSignal<T> RACSignal<T>::takeUntil(RACSignal<U> trigger) const {
    return RACSignal([source = *this, trigger = std::move(trigger)](const Subscriber& subscriber) {
        const auto complete = [subscriber] { subscriber->sendCompleted(); };
        subscriber->disposable()->add(trigger.subscribe([complete](const U&) { complete(); }, complete));
        if (subscriber->disposable()->isDisposed()) return;
        source.forward(
            subscriber, [subscriber](const T& value) { subscriber->sendNext(value); }, complete);
    });
}

template <class T>
RACSignal<T> RACSignal<T>::distinctUntilChanged() const {
    return RACSignal([source = *this](const Subscriber& subscriber) {
        auto last = std::make_shared<std::optional<T>>();
        source.forward(
            subscriber,
            [subscriber, last](const T& value) {
                if (*last == value) return;
                *last = value;
                subscriber->sendNext(value);
            },
            [subscriber] { subscriber->sendCompleted(); });
    });
}

template <class T>
RACSignal<T> RACSignal<T>::deliverOnMainThread() const {
    return RACSignal([source = *this](const Subscriber& subscriber) {
        const auto onTheirWay = std::make_shared<std::atomic<int>>(0);
        const auto deliver = [onTheirWay](std::function<void()> event) {
            const bool alone = onTheirWay->fetch_add(1) == 0;
            if (alone && isMainThread()) {
                event();
                onTheirWay->fetch_sub(1);
                return;
            }
            DispatchQueue::main()->async([onTheirWay, event = std::move(event)] {
                event();
                onTheirWay->fetch_sub(1);
            });
        };
        source.forward(
            subscriber,
            [subscriber, deliver](const T& value) {
                deliver([subscriber, value] { subscriber->sendNext(value); });
            },
            [subscriber, deliver] { deliver([subscriber] { subscriber->sendCompleted(); }); });
    });
}

}  // namespace zqcore::platform
