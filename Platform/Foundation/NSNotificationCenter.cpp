#include "Platform/Foundation/NSNotificationCenter.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <utility>
#include <vector>

#include "Platform/Base/NSLog.h"

namespace zqcore::platform {

NSNotification::NSNotification(std::string name, std::shared_ptr<NSObject> object, UserInfo userInfo)
    : name_(std::move(name)), object_(std::move(object)), userInfo_(std::move(userInfo)) {}

struct NSNotificationCenter::Observation {
    std::optional<std::string> name;
    // The address alone names the object, also while it goes; it is not kept.
    bool aboutAnyone = true;
    std::weak_ptr<NSObject> object;

    const NSObject* observer = nullptr;
    std::weak_ptr<NSObject> weakObserver;
    std::shared_ptr<NSObject> token;
    std::optional<Selector> selector;
    Block block;
    std::atomic<bool> ended{false};

    [[nodiscard]] bool wants(std::string_view posted, const std::shared_ptr<NSObject>& about) const {
        if (name && *name != posted) return false;
        // By owner, so that no reference is taken that might turn out to be the last one, under a lock.
        return aboutAnyone || (about && !object.owner_before(about) && !about.owner_before(object));
    }
    [[nodiscard]] bool isOver() const {
        return ended || (selector && weakObserver.expired()) || (!aboutAnyone && object.expired());
    }
};

struct NSNotificationCenter::State {
    std::mutex mutex;
    std::vector<std::shared_ptr<Observation>> observations;

    void add(std::shared_ptr<Observation> observation) {
        // What the closures hold goes after the lock.
        std::vector<std::shared_ptr<Observation>> over;
        const std::lock_guard lock(mutex);
        // Those whose observer or object died go when the next one comes.
        std::erase_if(observations, [&](const auto& one) {
            if (!one->isOver()) return false;
            over.push_back(one);
            return true;
        });
        observations.push_back(std::move(observation));
    }
};

NSNotificationCenter::NSNotificationCenter() : state_(std::make_unique<State>()) {}
NSNotificationCenter::~NSNotificationCenter() = default;

NSNotificationCenter& NSNotificationCenter::defaultCenter() {
    // Never ended: objects may still post while the process goes.
    static NSNotificationCenter& center = *new NSNotificationCenter;
    return center;
}

std::shared_ptr<NSObject> NSNotificationCenter::addObserverForName(std::optional<std::string> name,
                                                                   const std::shared_ptr<NSObject>& object,
                                                                   Block block) {
    auto observation = std::make_shared<Observation>();
    auto token = makeObject<NSObject>();
    observation->name = std::move(name);
    observation->aboutAnyone = object == nullptr;
    observation->object = object;
    observation->observer = token.get();
    observation->token = token;
    observation->block = std::move(block);
    if (observation->block) state_->add(std::move(observation));
    return token;
}

void NSNotificationCenter::addObserver(const std::shared_ptr<NSObject>& observer, const Selector& selector,
                                       std::optional<std::string> name,
                                       const std::shared_ptr<NSObject>& object) {
    if (!observer) return;
    auto observation = std::make_shared<Observation>();
    observation->name = std::move(name);
    observation->aboutAnyone = object == nullptr;
    observation->object = object;
    observation->observer = observer.get();
    observation->weakObserver = observer;
    observation->selector = selector;
    state_->add(std::move(observation));
}

void NSNotificationCenter::removeObserver(const std::shared_ptr<NSObject>& observer) {
    removeObserver(observer.get());
}

void NSNotificationCenter::removeObserver(const NSObject* observer) {
    if (!observer) return;
    // What the closures hold goes after the lock.
    std::vector<std::shared_ptr<Observation>> removed;
    const std::lock_guard lock(state_->mutex);
    std::erase_if(state_->observations, [&](const auto& one) {
        if (one->observer != observer) return false;
        one->ended = true;
        removed.push_back(one);
        return true;
    });
}

void NSNotificationCenter::postNotificationName(std::string_view name,
                                                const std::shared_ptr<NSObject>& object,
                                                NSNotification::UserInfo userInfo) {
    std::vector<std::shared_ptr<Observation>> wanted;
    {
        const std::lock_guard lock(state_->mutex);
        for (const auto& one : state_->observations) {
            if (one->wants(name, object)) wanted.push_back(one);
        }
    }
    if (wanted.empty()) return;
    const auto notification = makeObject<NSNotification>(std::string(name), object, std::move(userInfo));
    for (const auto& one : wanted) {
        if (one->ended) continue;
        try {
            if (one->block) {
                one->block(*notification);
            } else if (const auto observer = one->weakObserver.lock()) {
                one->selector->perform(*observer, notification.get());
            }
        } catch (const std::exception& error) {
            NSLog("observer of " + std::string(name) + " threw: " + error.what());
        } catch (...) {
            NSLog("observer of " + std::string(name) + " threw what is no exception");
        }
    }
}

}  // namespace zqcore::platform
