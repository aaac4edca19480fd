#include "Platform/Foundation/Text/NSCharacterSet.h"

#include <algorithm>

#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore::platform {
namespace {

constexpr char32_t kLastScalar = 0x10FFFF;

}  // namespace

NSCharacterSet NSCharacterSet::characterSetWithRanges(std::vector<Range> ranges) {
    std::erase_if(ranges, [](const Range& range) { return range.first > range.second; });
    std::ranges::sort(ranges);
    NSCharacterSet result;
    for (const auto& range : ranges) {
        if (!result.ranges_.empty() && range.first <= result.ranges_.back().second + 1) {
            auto& last = result.ranges_.back().second;
            last = std::max(last, range.second);
        } else {
            result.ranges_.push_back(range);
        }
    }
    for (const auto& [first, last] : result.ranges_) {
        for (char32_t c = first; c <= last && c < 0x80; ++c) {
            result.ascii_[c / 64] |= std::uint64_t{1} << c % 64;
        }
    }
    return result;
}

NSCharacterSet NSCharacterSet::characterSetWithCharactersInString(std::string_view text) {
    std::vector<Range> ranges;
    while (!text.empty()) {
        const auto scalar = firstScalar(text);
        ranges.emplace_back(scalar.value, scalar.value);
        text.remove_prefix(scalar.length);
    }
    return characterSetWithRanges(std::move(ranges));
}

NSCharacterSet NSCharacterSet::invertedSet() const {
    std::vector<Range> others;
    char32_t next = 0;
    for (const auto& [first, last] : ranges_) {
        if (first > next) others.emplace_back(next, first - 1);
        next = last + 1;
    }
    if (next <= kLastScalar) others.emplace_back(next, kLastScalar);
    return characterSetWithRanges(std::move(others));
}

bool NSCharacterSet::isMemberBeyondASCII(char32_t scalar) const noexcept {
    const auto next = std::ranges::upper_bound(ranges_, scalar, {}, &Range::first);
    return next != ranges_.begin() && scalar <= std::prev(next)->second;
}

}  // namespace zqcore::platform
