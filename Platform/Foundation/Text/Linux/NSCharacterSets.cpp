#include <unicode/uchar.h>

#include "Platform/Foundation/Text/NSCharacterSet.h"

namespace zqcore::platform {
namespace {

/// All scalars whose general category is in `mask`, read off the data in runs.
std::vector<NSCharacterSet::Range> categories(std::uint32_t mask) {
    struct Collected {
        std::uint32_t mask;
        std::vector<NSCharacterSet::Range> ranges;
    } collected{mask, {}};
    const auto collect = [](const void* context, UChar32 start, UChar32 limit, UCharCategory type) -> UBool {
        auto& into = *static_cast<Collected*>(const_cast<void*>(context));
        if (into.mask & U_MASK(type)) {
            into.ranges.emplace_back(static_cast<char32_t>(start), static_cast<char32_t>(limit - 1));
        }
        return true;
    };
    u_enumCharTypes(collect, &collected);
    return std::move(collected.ranges);
}

/// Never ended: threads may still ask while the process goes.
const NSCharacterSet& ofRanges(std::vector<NSCharacterSet::Range> ranges) {
    return *new NSCharacterSet(NSCharacterSet::characterSetWithRanges(std::move(ranges)));
}

const NSCharacterSet& ofCategories(std::uint32_t mask) { return ofRanges(categories(mask)); }

}  // namespace

const NSCharacterSet& NSCharacterSet::letterCharacterSet() {
    static const auto& set = ofCategories(U_GC_L_MASK | U_GC_M_MASK);
    return set;
}

const NSCharacterSet& NSCharacterSet::alphanumericCharacterSet() {
    static const auto& set = ofCategories(U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK);
    return set;
}

const NSCharacterSet& NSCharacterSet::decimalDigitCharacterSet() {
    static const auto& set = ofCategories(U_GC_ND_MASK);
    return set;
}

const NSCharacterSet& NSCharacterSet::punctuationCharacterSet() {
    static const auto& set = ofCategories(U_GC_P_MASK);
    return set;
}

const NSCharacterSet& NSCharacterSet::whitespaceAndNewlineCharacterSet() {
    static const auto& set = [] -> const NSCharacterSet& {
        auto ranges = categories(U_GC_Z_MASK);
        ranges.insert(ranges.end(), {{0x09, 0x0D}, {0x85, 0x85}, {0x200B, 0x200B}});
        return ofRanges(std::move(ranges));
    }();
    return set;
}

}  // namespace zqcore::platform
