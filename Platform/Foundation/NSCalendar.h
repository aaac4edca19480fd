#pragma once

#include <optional>

#include "Platform/Base/Date.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// A moment as a clock on the wall and a calendar show it. Months and days count from 1.
struct NSDateComponents {
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;

    friend bool operator==(const NSDateComponents&, const NSDateComponents&) = default;
};

/// The Gregorian calendar in the time zone that is current at the call (TZ, else /etc/localtime).
/// Threads: any.
class ZQ_EXPORT NSCalendar final {
  public:
    NSCalendar() = delete;

    [[nodiscard]] static NSDateComponents componentsFromDate(Date date);
    /// The first moment of the day: midnight, or, where the zone's clocks skip midnight, when they go on.
    /// Absent if there is no such day.
    [[nodiscard]] static std::optional<Date> dateFromDay(int year, int month, int day);
};

}  // namespace zqcore::platform
