#pragma once

#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Base/Date.h"
#include "Platform/Base/Export.h"
#include "Platform/Foundation/NSTimeZone.h"

namespace zqcore::platform {

class TextualDateFormat;

/// Dates as text and back, by a pattern of UTS #35 ("Date Format Patterns"), in the locale en_US_POSIX and
/// the Gregorian calendar: ASCII digits, English names, and no setting of the user interferes.
///
/// Patterns of numbers alone (y M d H m s S Z and literal text) are done here and cost well below a
/// microsecond. Any other letter brings in ICU, whose first use costs milliseconds. Time: milliseconds.
/// Writing rounds to the nearest one, half up; reading cuts. Digits below are zeros. Threads: any, also on
/// one formatter, as long as nobody sets its properties. Failure: a text that doesn't match reads as absent;
/// a pattern that isn't valid writes nothing.
class ZQ_EXPORT NSDateFormatter final {
  public:
    NSDateFormatter() = default;
    [[nodiscard]] static std::shared_ptr<NSDateFormatter> make() {
        return std::make_shared<NSDateFormatter>();
    }

    [[nodiscard]] const std::string& dateFormat() const noexcept { return dateFormat_; }
    /// Initially empty, which writes the empty text. Letters between single quotes are literal text.
    void setDateFormat(std::string pattern);
    [[nodiscard]] NSTimeZone timeZone() const noexcept { return timeZone_; }
    /// Initially the process's own zone.
    void setTimeZone(NSTimeZone zone);

    [[nodiscard]] std::string stringFromDate(Date date) const;
    /// Strict: the whole text must match, blanks and letter case included. Fields of two letters and more
    /// (but the year) take just as many digits, `S` any number from one up. No date that the calendar doesn't
    /// have, no hour 24, no second 60. What lies beyond the range of `Date` gives its first or last moment.
    [[nodiscard]] std::optional<Date> dateFromString(std::string_view text) const;

  private:
    /// A run of one letter, or literal text.
    struct Item {
        char letter;  ///< 0 for literal text
        std::size_t count;
        std::string literal;
    };
    friend class DateFieldReader;

    static bool parsePattern(std::string_view pattern, std::vector<Item>& items);
    static void writeField(const Item& item, const std::tm& time, std::int64_t milliseconds,
                           std::string& out);

    std::string dateFormat_;
    NSTimeZone timeZone_ = NSTimeZone::defaultTimeZone();
    std::vector<Item> items_;
    /// For patterns with words; a null pointer for those of numbers alone.
    std::shared_ptr<const TextualDateFormat> textual_;
};

}  // namespace zqcore::platform
