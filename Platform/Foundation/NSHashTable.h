#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <vector>

namespace zqcore::platform {

/// A set of objects that it doesn't keep, told apart by identity. An object that has died is no member any
/// more. Threads: no lock; a table belongs to one thread. Failure: none.
template <class T>
class NSHashTable final {
  public:
    void addObject(const std::shared_ptr<T>& object) {
        if (!object || containsObject(object)) return;
        // The dead go whenever the table would otherwise have doubled.
        if (members_.size() >= purgeAt_) purgeAt_ = std::max(kSmallest, 2 * count());
        members_.push_back(object);
    }
    void removeObject(const std::shared_ptr<T>& object) {
        std::erase_if(members_, [&](const Member& member) { return member.lock() == object; });
    }
    void removeAllObjects() { members_.clear(); }

    [[nodiscard]] bool containsObject(const std::shared_ptr<T>& object) const {
        return object && std::ranges::any_of(members_, [&](const Member& m) { return m.lock() == object; });
    }
    /// The living members, in the order in which they came.
    [[nodiscard]] std::vector<std::shared_ptr<T>> allObjects() const {
        std::vector<std::shared_ptr<T>> objects;
        for (const Member& member : members_) {
            if (auto object = member.lock()) objects.push_back(std::move(object));
        }
        return objects;
    }
    /// How many members live.
    [[nodiscard]] std::size_t count() {
        std::erase_if(members_, [](const Member& member) { return member.expired(); });
        return members_.size();
    }

  private:
    using Member = std::weak_ptr<T>;
    static constexpr std::size_t kSmallest = 16;
    std::vector<Member> members_;
    std::size_t purgeAt_ = kSmallest;
};

}  // namespace zqcore::platform
