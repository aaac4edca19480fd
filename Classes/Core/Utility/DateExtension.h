#pragma once

#include <string>
#include <string_view>

#include "Platform/Base/Date.h"
#include "Platform/Base/Export.h"
#include "Platform/Foundation/NSDateFormatter.h"

namespace zqcore {

/// The class-level operation that the library adds to `NSDateFormatter`. Threads: any.
class ZQ_EXPORT NSDateFormatterExtension final {
  public:
    NSDateFormatterExtension() = delete;

    /// A new formatter that no setting of the user changes: locale "en_US_POSIX", Gregorian calendar.
    [[nodiscard]] static NSDateFormatter safeFormatter();
};

/// The date in the pattern `format`, by a safe formatter, in UTC or in the current time zone. Any thread.
[[nodiscard]] ZQ_EXPORT std::string zq_dateString(Date date, std::string_view format, bool useUTC);

/// The start of the date's day in the current time zone: midnight, or the first moment after it where the
/// clocks skip it. If that fails, one error line and the date unchanged. Any thread.
[[nodiscard]] ZQ_EXPORT Date zq_beginningDate(Date date);

/// A date in the current time zone; months and days count from 1.
struct ZQDateComponets {
    int year = 0;
    int mouth = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

/// Any thread.
[[nodiscard]] ZQ_EXPORT ZQDateComponets zq_parseDateComponets(Date date);

}  // namespace zqcore
