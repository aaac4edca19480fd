#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <source_location>
#include <utility>
#include <vector>

#include "Classes/Core/Utility/AbsentForm.h"
#include "Platform/Base/Export.h"
#include "Platform/Base/Value.h"
#include "Platform/Foundation/NSComparisonResult.h"
#include "Platform/Foundation/NSDictionary.h"
#include "Platform/Foundation/SortedOrder.h"

namespace zqcore {

// Functional operations on arrays. An empty result is absent, not an empty array. A block takes the element,
// or the element and its index, or both and a flag; setting the flag makes this element the last, whose
// answer still counts. A block's answer of nothing is an empty optional or a null pointer.
// Threads: pure but for the block. Failure: what a block throws passes through.
//
//     zq_map(files, [](const File& file) { return file.name; });          // optional vector of names
//     zq_find(files, [](const File& file, std::size_t index, bool& stop) { ... });

namespace array_block {

template <class Block, class T>
decltype(auto) call(Block& block, const T& element, std::size_t index, bool& stop) {
    if constexpr (std::invocable<Block&, const T&, std::size_t, bool&>) {
        return std::invoke(block, element, index, stop);
    } else if constexpr (std::invocable<Block&, const T&, std::size_t>) {
        return std::invoke(block, element, index);
    } else {
        return std::invoke(block, element);
    }
}

template <class Block, class T>
using Answer = std::decay_t<decltype(call(std::declval<Block&>(), std::declval<const T&>(), std::size_t{},
                                          std::declval<bool&>()))>;

/// Calls the block for each element until it stops, and `take` with the element and the answer.
template <class T, class Block, class Take>
void enumerate(const std::vector<T>& array, Block& block, Take take) {
    bool stop = false;
    for (std::size_t index = 0; index < array.size() && !stop; ++index) {
        take(index, AbsentForm<Answer<Block, T>>(call<Block, T>(block, array[index], index, stop)));
    }
}

template <class T>
[[nodiscard]] std::optional<std::vector<T>> notEmpty(std::vector<T> array) {
    if (array.empty()) return std::nullopt;
    return array;
}

ZQ_EXPORT void logSameElements(const std::source_location& where);

}  // namespace array_block

/// The answers of the block that are there, in order.
template <class T, class Block>
[[nodiscard]] auto zq_map(const std::vector<T>& array, Block block) {
    std::vector<PresentForm<array_block::Answer<Block, T>>> answers;
    array_block::enumerate(array, block, [&](std::size_t /*index*/, auto answer) {
        if (answer) answers.push_back(presentValue(std::move(answer)));
    });
    return array_block::notEmpty(std::move(answers));
}

/// The elements for which the block says true.
template <class T, class Block>
[[nodiscard]] std::optional<std::vector<T>> zq_where(const std::vector<T>& array, Block block) {
    std::vector<T> elements;
    array_block::enumerate(array, block, [&](std::size_t index, std::optional<bool> answer) {
        if (*answer) elements.push_back(array[index]);
    });
    return array_block::notEmpty(std::move(elements));
}

/// The first answer of the block that is there, which ends the enumeration. It is the answer, not the
/// element.
template <class T, class Block>
[[nodiscard]] auto zq_find(const std::vector<T>& array, Block block) {
    AbsentForm<array_block::Answer<Block, T>> found{};
    bool stop = false;
    for (std::size_t index = 0; index < array.size() && !found && !stop; ++index) {
        found = array_block::call<Block, T>(block, array[index], index, stop);
    }
    return found;
}

/// The elements of the arrays that the block gives, joined in order.
template <class T, class Block>
[[nodiscard]] auto zq_combine(const std::vector<T>& array, Block block) {
    PresentForm<array_block::Answer<Block, T>> joined;
    array_block::enumerate(array, block, [&](std::size_t /*index*/, auto answer) {
        if (answer) joined.insert(joined.end(), answer->begin(), answer->end());
    });
    return array_block::notEmpty(std::move(joined));
}

/// Each element with its index. An element that comes again takes the later index, and one line at error
/// level tells of it.
template <class T>
[[nodiscard]] std::optional<NSDictionary<T, std::size_t>> zq_objectToIndexDictionary(
    const std::vector<T>& array, const std::source_location& where = std::source_location::current()) {
    if (array.empty()) return std::nullopt;
    NSDictionary<T, std::size_t> indices;
    for (std::size_t index = 0; index < array.size(); ++index) {
        if (indices.find(array[index])) array_block::logSameElements(where);
        indices.set(array[index], index);
    }
    return indices;
}

/// The element, or absent for a negative index and for one at or past the end.
template <class T>
[[nodiscard]] AbsentForm<T> zq_safeObjectAtIndex(const std::vector<T>& array, std::int64_t index) {
    if (index < 0 || static_cast<std::size_t>(index) >= array.size()) return {};
    return array[static_cast<std::size_t>(index)];
}

/// Takes the elements for which the block says true out of `array`, after the enumeration, and gives them in
/// order.
template <class T, class Block>
std::optional<std::vector<T>> zq_removeWhere(std::vector<T>& array, Block block) {
    std::vector<bool> goes(array.size(), false);
    array_block::enumerate(array, block,
                           [&](std::size_t index, std::optional<bool> answer) { goes[index] = *answer; });
    std::vector<T> removed;
    std::vector<T> kept;
    for (std::size_t index = 0; index < array.size(); ++index) {
        (goes[index] ? removed : kept).push_back(std::move(array[index]));
    }
    array = std::move(kept);
    return array_block::notEmpty(std::move(removed));
}

/// The key of an element's group; nothing is a group too.
template <class Key, class T>
using GroupBy = std::function<std::optional<Key>(const T& element, std::size_t index)>;
/// The order of two groups, each told by its elements and their keys.
template <class Key, class T>
using GroupSort = std::function<NSComparisonResult(
    const std::vector<T>& first, const std::vector<std::optional<Key>>& firstKeys,
    const std::vector<T>& second, const std::vector<std::optional<Key>>& secondKeys)>;
/// The order of two elements of a group.
template <class Key, class T>
using ObjSort = std::function<NSComparisonResult(const T& first, const std::optional<Key>& firstKey,
                                                 const T& second, const std::optional<Key>& secondKey)>;

namespace array_block {

template <class Key, class T>
struct Group {
    std::vector<T> elements;
    std::vector<std::optional<Key>> keys;
};

template <class Key, class T>
[[nodiscard]] NSDictionary<std::optional<Key>, Group<Key, T>> grouped(const std::vector<T>& array,
                                                                      const GroupBy<Key, T>& groupBy) {
    NSDictionary<std::optional<Key>, Group<Key, T>> groups;
    for (std::size_t index = 0; index < array.size(); ++index) {
        std::optional<Key> key = groupBy(array[index], index);
        // The null value is the same as nothing.
        if constexpr (std::same_as<Key, Value>) {
            if (key && key->isNull()) key.reset();
        }
        if (!groups.find(key)) groups.set(key, {});
        Group<Key, T>& group = *groups.find(key);
        group.elements.push_back(array[index]);
        group.keys.push_back(std::move(key));
    }
    return groups;
}

template <class Key, class T>
[[nodiscard]] std::vector<T> sortedElements(const Group<Key, T>& group, const ObjSort<Key, T>& objSort) {
    if (!objSort) return group.elements;
    std::vector<T> elements;
    const auto& [objects, keys] = group;
    for (const std::size_t index : sortedOrder(objects.size(), [&](std::size_t a, std::size_t b) {
             return objSort(group.elements[a], group.keys[a], group.elements[b], group.keys[b]);
         })) {
        elements.push_back(objects[index]);
    }
    return elements;
}

}  // namespace array_block

/// The elements in groups of equal keys: the groups ordered by `groupSort`, without it as their first
/// elements stand; the elements of a group by `objSort`, without it as they stand. Both sorts are stable.
/// Absent without `groupBy` and for an empty array.
///
///     zq_groupBy<std::string>(words, firstLetter, byLetter, byLength);
template <class Key, class T>
[[nodiscard]] std::optional<std::vector<std::vector<T>>> zq_groupBy(
    const std::vector<T>& array, const std::type_identity_t<GroupBy<Key, T>>& groupBy,
    const std::type_identity_t<GroupSort<Key, T>>& groupSort = nullptr,
    const std::type_identity_t<ObjSort<Key, T>>& objSort = nullptr) {
    if (!groupBy) return std::nullopt;
    const auto groups = array_block::grouped<Key, T>(array, groupBy);
    const auto group = [&](std::size_t index) -> const auto& { return (groups.begin() + index)->second; };
    const auto order = sortedOrder(groups.size(), [&](std::size_t a, std::size_t b) {
        if (!groupSort) return NSOrderedSame;
        return groupSort(group(a).elements, group(a).keys, group(b).elements, group(b).keys);
    });
    std::vector<std::vector<T>> result;
    for (const std::size_t index : order) {
        result.push_back(array_block::sortedElements<Key, T>(group(index), objSort));
    }
    return array_block::notEmpty(std::move(result));
}

}  // namespace zqcore
