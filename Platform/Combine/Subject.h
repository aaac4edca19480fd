#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "Platform/Combine/Publisher.h"

namespace zqcore::platform {

namespace combine {

/// One subscriber of a subject. Values reach it one at a time; a value that is older than one that it has
/// seen, because two threads sent at once, is left out, so that the last it sees is the last that was sent.
template <class T>
class SubjectSubscription {
  public:
    explicit SubjectSubscription(typename Publisher<T>::Sink sink) : sink_(std::move(sink)) {}

    void deliver(const T& value, std::optional<std::uint64_t> version = std::nullopt) {
        // Recursive: a receiver may send on the same subject.
        const std::lock_guard lock(mutex_);
        if (cancelled_) return;
        if (version) {
            if (*version < nextVersion_) return;
            nextVersion_ = *version + 1;
        }
        sink_(value);
    }
    void cancel() noexcept { cancelled_ = true; }

  private:
    std::recursive_mutex mutex_;
    std::atomic<bool> cancelled_{false};
    std::uint64_t nextVersion_ = 0;
    typename Publisher<T>::Sink sink_;
};

/// Who has subscribed, in order. Read by copy, so that no lock is held while receivers run.
template <class T>
class SubscriberList {
  public:
    using Subscription = std::shared_ptr<SubjectSubscription<T>>;

    std::mutex mutex;
    std::vector<Subscription> subscriptions;

    [[nodiscard]] static AnyCancellable cancellable(const std::shared_ptr<SubscriberList>& list,
                                                    const Subscription& subscription) {
        // The subject alone keeps its subscribers: a receiver may hold what holds its own subscription.
        return AnyCancellable([weakList = std::weak_ptr(list), weak = std::weak_ptr(subscription)] {
            const auto kept = weak.lock();
            const auto keptList = weakList.lock();
            if (kept) kept->cancel();
            if (!kept || !keptList) return;
            const std::lock_guard lock(keptList->mutex);
            std::erase(keptList->subscriptions, kept);
        });
    }
};

}  // namespace combine

/// A publisher that is fed by hand and keeps nothing. Threads: any; values are delivered on the thread that
/// sends. Lifetime: it keeps its receivers; subscriptions may outlive it and then simply stay silent.
template <class T>
class PassthroughSubject final : public Publisher<T> {
  public:
    void send(const T& value) {
        std::unique_lock lock(list_->mutex);
        const auto subscriptions = list_->subscriptions;
        lock.unlock();
        for (const auto& subscription : subscriptions) subscription->deliver(value);
    }

    [[nodiscard]] AnyCancellable sink(typename Publisher<T>::Sink receiveValue) override {
        auto subscription = std::make_shared<combine::SubjectSubscription<T>>(std::move(receiveValue));
        {
            const std::lock_guard lock(list_->mutex);
            list_->subscriptions.push_back(subscription);
        }
        return combine::SubscriberList<T>::cancellable(list_, subscription);
    }

  private:
    std::shared_ptr<combine::SubscriberList<T>> list_ = std::make_shared<combine::SubscriberList<T>>();
};

/// A publisher with a current value: a new subscriber gets it at once, on its own thread, and then every
/// value that is sent, on the sender's. Threads: any; when several send at once each subscriber still ends
/// with the value that the subject holds. Lifetime: as `PassthroughSubject`.
template <class T>
class CurrentValueSubject final : public Publisher<T> {
  public:
    explicit CurrentValueSubject(T value) : value_(std::move(value)) {}

    [[nodiscard]] T value() const {
        const std::lock_guard lock(list_->mutex);
        return value_;
    }
    void setValue(const T& value) { send(value); }

    /// Sets the value, then delivers it; a receiver that asks for the value finds the new one. The earlier
    /// value ends last of all.
    void send(const T& value) {
        // Copied and ended outside the lock: what belongs to a value may come back to this subject.
        T other = value;
        std::unique_lock lock(list_->mutex);
        std::swap(value_, other);
        const std::uint64_t version = ++version_;
        const auto subscriptions = list_->subscriptions;
        lock.unlock();
        for (const auto& subscription : subscriptions) subscription->deliver(value, version);
    }

    [[nodiscard]] AnyCancellable sink(typename Publisher<T>::Sink receiveValue) override {
        auto subscription = std::make_shared<combine::SubjectSubscription<T>>(std::move(receiveValue));
        std::unique_lock lock(list_->mutex);
        list_->subscriptions.push_back(subscription);
        const T value = value_;
        const std::uint64_t version = version_;
        lock.unlock();
        subscription->deliver(value, version);
        return combine::SubscriberList<T>::cancellable(list_, subscription);
    }

  private:
    std::shared_ptr<combine::SubscriberList<T>> list_ = std::make_shared<combine::SubscriberList<T>>();
    T value_;
    std::uint64_t version_ = 0;
};

}  // namespace zqcore::platform
