#include "Platform/Foundation/Text/Compare.h"

#include <unicode/unistr.h>
#include <unicode/unorm2.h>

#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore::platform {
namespace {

NSComparisonResult ordered(int difference) noexcept {
    if (difference == 0) return NSOrderedSame;
    return difference < 0 ? NSOrderedAscending : NSOrderedDescending;
}

icu::UnicodeString unicode(std::string_view text) {
    return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

}  // namespace

NSComparisonResult compareText(std::string_view a, std::string_view b) {
    if (a == b) return NSOrderedSame;
    constexpr std::size_t kLimit = 0x3FFFFFFF;  // lengths are signed 32-bit numbers there
    if ((isASCII(a) && isASCII(b)) || a.size() > kLimit || b.size() > kLimit) return ordered(a.compare(b));
    const auto left = unicode(a);
    const auto right = unicode(b);
    UErrorCode status = U_ZERO_ERROR;
    const auto difference = unorm_compare(left.getBuffer(), left.length(), right.getBuffer(), right.length(),
                                          U_COMPARE_CODE_POINT_ORDER, &status);
    // In UTF-8 the order of bytes is that of code points.
    return ordered(U_SUCCESS(status) ? difference : a.compare(b));
}

}  // namespace zqcore::platform
