#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <unordered_map>
#include <utility>

#include "Platform/Foundation/ObjectEquality.h"

namespace zqcore::platform {

/// Objects under keys: the keys are kept, the objects are not. An object that has died reads as absent.
/// Threads: no lock; a table belongs to one thread. Failure: none.
template <class Key, class T>
class NSMapTable final {
  public:
    [[nodiscard]] std::shared_ptr<T> objectForKey(const Key& key) const {
        const auto found = entries_.find(key);
        return found == entries_.end() ? nullptr : found->second.lock();
    }
    /// Replaces; no object removes.
    void setObject(const std::shared_ptr<T>& object, Key key) {
        if (!object) return removeObjectForKey(key);
        // The dead go whenever the table would otherwise have doubled.
        if (entries_.size() >= purgeAt_) purgeAt_ = std::max(kSmallest, 2 * count());
        entries_.insert_or_assign(std::move(key), object);
    }
    void removeObjectForKey(const Key& key) { entries_.erase(key); }
    void removeAllObjects() { entries_.clear(); }

    /// How many keys have an object that lives.
    [[nodiscard]] std::size_t count() {
        std::erase_if(entries_, [](const auto& entry) { return entry.second.expired(); });
        return entries_.size();
    }

  private:
    static constexpr std::size_t kSmallest = 16;

    std::unordered_map<Key, std::weak_ptr<T>, ObjectHash<Key>, ObjectEqual<Key>> entries_;
    std::size_t purgeAt_ = kSmallest;
};

}  // namespace zqcore::platform
