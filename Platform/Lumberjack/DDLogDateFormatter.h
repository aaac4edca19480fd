#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Base/Date.h"
#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// Writes dates as "yyyy-MM-dd HH:mm:ss.SSS" in the local zone: digits of ASCII, the Gregorian calendar,
/// rounded to the nearest millisecond, half of one up. The text of the last minute is kept, so that a line of
/// the same minute costs a few digits; a change of the zone shows within a minute.
/// Threads: one at a time. Failure: none.
class ZQ_EXPORT DDLogDateFormatter final {
  public:
    [[nodiscard]] std::string stringFromDate(Date date);
    void append(std::string& text, Date date);

  private:
    void refresh(std::int64_t second);

    std::int64_t minute_ = INT64_MIN;
    bool oddZone_ = false;  // its offset is no whole minute
    int second_ = 0;
    std::string prefix_;  // up to the minute's colon
};

/// "yyyy-MM-dd--HH-mm-ss-SSS" in UTC, as it stands in the names of log files.
[[nodiscard]] ZQ_EXPORT std::string logFileDateText(Date date);
/// The date at the beginning of `text`, absent if none is there.
[[nodiscard]] ZQ_EXPORT std::optional<Date> logFileDate(std::string_view text);

}  // namespace zqcore::platform
