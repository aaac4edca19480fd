#include <unicode/uchar.h>

#include "Platform/Foundation/Text/NSCharacterSet.h"

namespace zqcore::platform {

const NSCharacterSet& NSCharacterSet::decimalDigitCharacterSet() {
    // Never ended: threads may still ask while the process goes.
    static const auto& set = *new NSCharacterSet([] {
        std::vector<Range> ranges;
        const auto collect = [](const void* context, UChar32 start, UChar32 limit,
                                UCharCategory type) -> UBool {
            auto& into = *static_cast<std::vector<Range>*>(const_cast<void*>(context));
            if (type == U_DECIMAL_DIGIT_NUMBER)
                into.emplace_back(static_cast<char32_t>(start), static_cast<char32_t>(limit - 1));
            return true;
        };
        u_enumCharTypes(collect, &ranges);
        return characterSetWithRanges(std::move(ranges));
    }());
    return set;
}

}  // namespace zqcore::platform
