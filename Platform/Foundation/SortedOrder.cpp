#include "Platform/Foundation/SortedOrder.h"

#include <algorithm>
#include <numeric>

namespace zqcore::platform {

std::vector<std::size_t> sortedOrder(
    std::size_t count, const std::function<NSComparisonResult(std::size_t, std::size_t)>& comparator) {
    std::vector<std::size_t> order(count);
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::vector<std::size_t> merged(count);
    // Merging runs that double in length: std::stable_sort may leave its range when the order is none.
    for (std::size_t width = 1; width < count; width *= 2) {
        for (std::size_t begin = 0; begin < count; begin += 2 * width) {
            const std::size_t middle = std::min(begin + width, count);
            const std::size_t end = std::min(begin + 2 * width, count);
            std::size_t left = begin;
            std::size_t right = middle;
            for (std::size_t at = begin; at < end; ++at) {
                const bool takeRight =
                    left == middle ||
                    (right < end && comparator(order[left], order[right]) == NSOrderedDescending);
                merged[at] = order[takeRight ? right++ : left++];
            }
        }
        order.swap(merged);
    }
    return order;
}

}  // namespace zqcore::platform
