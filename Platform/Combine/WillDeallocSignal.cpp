#include "Platform/Combine/WillDeallocSignal.h"

#include <algorithm>
#include <any>
#include <mutex>
#include <utility>
#include <vector>

namespace zqcore::platform {

namespace {

using Subscriber = RACSignal<RACUnit>::Subscriber;

/// One for each object that was asked, so that subscriptions that come and go leave nothing on the object.
class Deallocation {
  public:
    void add(const Subscriber& subscriber) {
        std::unique_lock lock(mutex_);
        if (!gone_) {
            subscribers_.push_back(subscriber);
            return;
        }
        lock.unlock();
        subscriber->sendCompleted();
    }
    void remove(const RACDisposable* disposable) {
        Subscriber removed;
        const std::lock_guard lock(mutex_);
        const auto found = std::ranges::find_if(
            subscribers_, [&](const auto& one) { return one->disposable().get() == disposable; });
        if (found == subscribers_.end()) return;
        removed = std::move(*found);
        subscribers_.erase(found);
    }
    void happens() {
        std::vector<Subscriber> subscribers;
        {
            const std::lock_guard lock(mutex_);
            gone_ = true;
            subscribers.swap(subscribers_);
        }
        for (const auto& subscriber : subscribers) subscriber->sendCompleted();
    }

  private:
    std::mutex mutex_;
    bool gone_ = false;
    std::vector<Subscriber> subscribers_;
};

constexpr char kDeallocationKey = 0;

std::shared_ptr<Deallocation> deallocationOf(NSObject& object) {
    // Two threads may ask for the first time at once.
    static std::mutex* const kMutex = new std::mutex;
    const std::lock_guard lock(*kMutex);
    const std::any stored = object.associatedValue(&kDeallocationKey);
    if (const auto* present = std::any_cast<std::shared_ptr<Deallocation>>(&stored)) return *present;
    auto made = std::make_shared<Deallocation>();
    object.setAssociatedValue(&kDeallocationKey, made);
    object.addDeallocHandler([made] { made->happens(); });
    return made;
}

}  // namespace

RACSignal<RACUnit> rac_willDeallocSignal(const std::shared_ptr<NSObject>& object) {
    auto deallocation = object ? deallocationOf(*object) : nullptr;
    return RACSignal<RACUnit>([deallocation = std::move(deallocation)](const Subscriber& subscriber) {
        if (!deallocation) {
            subscriber->sendCompleted();
            return;
        }
        deallocation->add(subscriber);
        subscriber->disposable()->add(
            [weak = std::weak_ptr(deallocation), disposable = subscriber->disposable().get()] {
                if (const auto held = weak.lock()) held->remove(disposable);
            });
    });
}

}  // namespace zqcore::platform
