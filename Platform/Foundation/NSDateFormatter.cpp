#include "Platform/Foundation/NSDateFormatter.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "Platform/Foundation/TextualDateFormat.h"

namespace zqcore::platform {

namespace {

constexpr std::string_view kNumericLetters = "yMdHmsSZ";

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isNumeric(char letter, std::size_t count) {
    if (kNumericLetters.find(letter) == std::string_view::npos) return false;
    if (letter == 'M') return count <= 2;
    if (letter == 'y') return count != 2;  // of which hundred, only the locale knows
    return letter != 'Z' || count <= 3;
}

std::string digits(std::int64_t value, std::size_t width) {
    std::array<char, 32> text;
    (void)std::snprintf(text.data(), text.size(), "%0*lld",
                        static_cast<int>(std::min<std::size_t>(width, 20)), static_cast<long long>(value));
    return text.data();
}

std::int64_t floorDivision(std::int64_t value, std::int64_t divisor) {
    const std::int64_t quotient = value / divisor;
    return value % divisor < 0 ? quotient - 1 : quotient;
}

Date clampedDate(std::int64_t milliseconds) {
    constexpr auto lowest = std::chrono::ceil<std::chrono::milliseconds>(Date::min().time_since_epoch());
    constexpr auto highest = std::chrono::floor<std::chrono::milliseconds>(Date::max().time_since_epoch());
    return Date(std::clamp(std::chrono::milliseconds(milliseconds), lowest, highest));
}

}  // namespace

/// Takes the fields of one text in turn, and makes a moment of them.
class DateFieldReader final {
  public:
    explicit DateFieldReader(std::string_view text) : rest_(text) {}

    bool take(const NSDateFormatter::Item& item, bool numberFollows) {
        if (item.letter == 0) return takeLiteral(item.literal);
        switch (item.letter) {
            case 'y':
                return takeYear(item.count, numberFollows);
            case 'M':
                return takeNumber(month_, item.count, 1, 12);
            case 'd':
                return takeNumber(day_, item.count, 1, 31);
            case 'H':
                return takeNumber(hour_, item.count, 0, 23);
            case 'm':
                return takeNumber(minute_, item.count, 0, 59);
            case 's':
                return takeNumber(second_, item.count, 0, 59);
            case 'S':
                return takeFraction();
            default:
                return takeOffset();
        }
    }

    std::optional<std::int64_t> milliseconds(NSTimeZone zone) const {
        using namespace std::chrono;
        const year_month_day date{year(year_), month(static_cast<unsigned>(month_)),
                                  day(static_cast<unsigned>(day_))};
        if (!rest_.empty() || !date.ok()) return std::nullopt;
        std::tm time{};
        time.tm_year = year_ - 1900;
        time.tm_mon = month_ - 1;
        time.tm_mday = day_;
        time.tm_hour = hour_;
        time.tm_min = minute_;
        time.tm_sec = second_;
        if (hasOffset_) zone = NSTimeZone::timeZoneForSecondsFromGMT(offset_);
        return zone.moment(time) * 1000 + milliseconds_;
    }

  private:
    [[nodiscard]] std::size_t digitCount() const {
        const auto end = std::ranges::find_if_not(rest_, isDigit);
        return static_cast<std::size_t>(end - rest_.begin());
    }

    int takeDigits(std::size_t count) {
        int value = 0;
        for (const char c : rest_.substr(0, count)) value = value * 10 + (c - '0');
        rest_.remove_prefix(count);
        return value;
    }

    bool takeLiteral(std::string_view literal) {
        if (!rest_.starts_with(literal)) return false;
        rest_.remove_prefix(literal.size());
        return true;
    }

    bool takeNumber(int& into, std::size_t width, int lowest, int highest) {
        const std::size_t found = digitCount();
        // A single letter is one digit or two; more letters are just so many digits.
        const std::size_t count = width == 1 ? std::min<std::size_t>(found, 2) : width;
        if (count == 0 || found < count || count > 9) return false;
        into = takeDigits(count);
        return into >= lowest && into <= highest;
    }

    bool takeYear(std::size_t width, bool numberFollows) {
        constexpr std::size_t kLongest = 5;
        const std::size_t found = digitCount();
        const std::size_t count = numberFollows ? width : found;
        if (count == 0 || found < count || count > kLongest) return false;
        year_ = takeDigits(count);
        constexpr int kLast = 32767;  // of the C++ library's calendar
        return year_ <= kLast;
    }

    bool takeFraction() {
        const std::size_t found = digitCount();
        if (found == 0) return false;
        const std::size_t used = std::min<std::size_t>(found, 3);
        milliseconds_ = takeDigits(used);
        for (std::size_t i = used; i < 3; ++i) milliseconds_ *= 10;
        rest_.remove_prefix(found - used);
        return true;
    }

    bool takeOffset() {
        if (rest_.size() < 5 || (rest_[0] != '+' && rest_[0] != '-')) return false;
        const int sign = rest_[0] == '-' ? -1 : 1;
        rest_.remove_prefix(1);
        if (digitCount() < 4) return false;
        const int hours = takeDigits(2);
        const int minutes = takeDigits(2);
        if (hours > 23 || minutes > 59) return false;
        offset_ = sign * (hours * 3600 + minutes * 60);
        hasOffset_ = true;
        return true;
    }

    std::string_view rest_;
    int year_ = 1970;
    int month_ = 1;
    int day_ = 1;
    int hour_ = 0;
    int minute_ = 0;
    int second_ = 0;
    int milliseconds_ = 0;
    // Not an optional: GCC 12 at -O3 wrongly takes its content for uninitialised.
    bool hasOffset_ = false;
    std::int32_t offset_ = 0;
};

void NSDateFormatter::setDateFormat(std::string pattern) {
    dateFormat_ = std::move(pattern);
    items_.clear();
    textual_ = nullptr;
    if (!parsePattern(dateFormat_, items_)) textual_ = TextualDateFormat::make(dateFormat_, timeZone_);
}

void NSDateFormatter::setTimeZone(NSTimeZone zone) {
    timeZone_ = zone;
    if (textual_) textual_ = TextualDateFormat::make(dateFormat_, timeZone_);
}

// Cuts a pattern into its runs; false, with no runs, if one of them is no plain number. Two quotes are one,
// in quoted text and outside.
bool NSDateFormatter::parsePattern(std::string_view pattern, std::vector<Item>& items) {
    const auto literal = [&items](char c) {
        if (items.empty() || items.back().letter != 0) items.push_back({0, 0, {}});
        items.back().literal.push_back(c);
    };
    bool quoted = false;
    bool numeric = true;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const char c = pattern[i];
        if (c == '\'') {
            if (pattern.substr(i + 1).starts_with('\'')) {
                literal('\'');
                ++i;
            } else {
                quoted = !quoted;
            }
        } else if (quoted || !isLetter(c)) {
            literal(c);
        } else if (!items.empty() && items.back().letter == c) {
            ++items.back().count;
        } else {
            items.push_back({c, 1, {}});
        }
    }
    for (const Item& item : items)
        numeric = numeric && (item.letter == 0 || isNumeric(item.letter, item.count));
    if (!numeric || quoted) items.clear();
    return numeric && !quoted;
}

void NSDateFormatter::writeField(const Item& item, const std::tm& time, std::int64_t milliseconds,
                                 std::string& out) {
    switch (item.letter) {
        case 0:
            out += item.literal;
            break;
        case 'y':
            out += digits(1900 + time.tm_year, item.count);
            break;
        case 'M':
            out += digits(time.tm_mon + 1, item.count);
            break;
        case 'd':
            out += digits(time.tm_mday, item.count);
            break;
        case 'H':
            out += digits(time.tm_hour, item.count);
            break;
        case 'm':
            out += digits(time.tm_min, item.count);
            break;
        case 's':
            out += digits(time.tm_sec, item.count);
            break;
        case 'S': {
            std::string fraction = digits(milliseconds, 3);
            fraction.resize(item.count, '0');
            out += fraction;
            break;
        }
        default: {
            const long minutes = std::labs(time.tm_gmtoff) / 60;
            out += (time.tm_gmtoff < 0 ? "-" : "+") + digits(minutes / 60, 2) + digits(minutes % 60, 2);
        }
    }
}

std::string NSDateFormatter::stringFromDate(Date date) const {
    constexpr std::int64_t kMillisecond = 1'000'000;
    // Halves go up, below 1970 as above it; the sum itself can't overflow this way.
    const std::int64_t nanoseconds = date.time_since_epoch().count();
    const std::int64_t whole = floorDivision(nanoseconds, kMillisecond);
    const std::int64_t milliseconds =
        whole + (nanoseconds - whole * kMillisecond >= kMillisecond / 2 ? 1 : 0);
    if (textual_) return textual_->write(milliseconds);
    const std::int64_t seconds = floorDivision(milliseconds, 1000);
    const std::tm time = timeZone_.calendarTime(seconds);
    std::string text;
    for (const Item& item : items_) writeField(item, time, milliseconds - seconds * 1000, text);
    return text;
}

std::optional<Date> NSDateFormatter::dateFromString(std::string_view text) const {
    if (textual_) {
        const std::optional<std::int64_t> milliseconds = textual_->read(text);
        return milliseconds ? std::optional(clampedDate(*milliseconds)) : std::nullopt;
    }
    if (items_.empty()) return std::nullopt;
    DateFieldReader reader(text);
    for (std::size_t i = 0; i < items_.size(); ++i) {
        const bool numberFollows =
            i + 1 < items_.size() && items_[i + 1].letter != 0 && items_[i + 1].letter != 'Z';
        if (!reader.take(items_[i], numberFollows)) return std::nullopt;
    }
    const std::optional<std::int64_t> milliseconds = reader.milliseconds(timeZone_);
    return milliseconds ? std::optional(clampedDate(*milliseconds)) : std::nullopt;
}

}  // namespace zqcore::platform
