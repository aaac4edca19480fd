#pragma once

#include <cstddef>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Platform/Foundation/ObjectEquality.h"

namespace zqcore::platform {

/// A dictionary with keys of any kind that keeps the order in which they were first set. (With text keys and
/// generic values, `ValueDictionary` serves.) Threads: a value.
template <class Key, class Object>
class NSDictionary final {
  public:
    using Entry = std::pair<Key, Object>;

    /// The object under `key`, or null pointer. It stays valid until the dictionary changes.
    [[nodiscard]] const Object* find(const Key& key) const {
        return const_cast<NSDictionary*>(this)->find(key);
    }
    [[nodiscard]] Object* find(const Key& key) {
        const auto [begin, end] = places_.equal_range(ObjectHash<Key>()(key));
        for (auto place = begin; place != end; ++place) {
            Entry& entry = entries_[place->second];
            if (ObjectEqual<Key>()(entry.first, key)) return &entry.second;
        }
        return nullptr;
    }
    /// Replaces the object under `key`, or appends a new entry.
    void set(Key key, Object object) {
        if (Object* present = find(key)) {
            *present = std::move(object);
            return;
        }
        places_.emplace(ObjectHash<Key>()(key), entries_.size());
        entries_.emplace_back(std::move(key), std::move(object));
    }

    [[nodiscard]] std::size_t size() const noexcept { return entries_.size(); }
    [[nodiscard]] bool empty() const noexcept { return entries_.empty(); }
    [[nodiscard]] auto begin() const noexcept { return entries_.begin(); }
    [[nodiscard]] auto end() const noexcept { return entries_.end(); }
    [[nodiscard]] auto begin() noexcept { return entries_.begin(); }
    [[nodiscard]] auto end() noexcept { return entries_.end(); }

  private:
    std::vector<Entry> entries_;
    // By hash, so that keys lie in one place.
    std::unordered_multimap<std::size_t, std::size_t> places_;
};

}  // namespace zqcore::platform
