#include "Platform/Foundation/TextualDateFormat.h"

#include <unicode/locid.h>
#include <unicode/simpletz.h>
#include <unicode/smpdtfmt.h>
#include <unicode/unistr.h>

#include <cmath>
#include <mutex>

namespace zqcore::platform {

namespace {

icu::UnicodeString unicode(std::string_view text) {
    return icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
}

class ICUDateFormat final : public TextualDateFormat {
  public:
    ICUDateFormat(std::string_view pattern, NSTimeZone zone)
        : format_(unicode(pattern), icu::Locale("en_US_POSIX"), status_) {
        if (!valid()) return;
        if (const auto seconds = zone.fixedSeconds()) {
            const std::string name = *seconds == 0 ? "GMT" : "";
            format_.adoptTimeZone(new icu::SimpleTimeZone(*seconds * 1000, unicode(name)));
        }
        format_.setLenient(false);
    }

    [[nodiscard]] bool valid() const { return U_SUCCESS(status_); }

    std::string write(std::int64_t milliseconds) const override {
        const std::scoped_lock lock(mutex_);
        icu::UnicodeString text;
        format_.format(static_cast<UDate>(milliseconds), text);
        std::string result;
        text.toUTF8String(result);
        return result;
    }

    std::optional<std::int64_t> read(std::string_view text) const override {
        const icu::UnicodeString whole = unicode(text);
        const std::scoped_lock lock(mutex_);
        icu::ParsePosition position(0);
        const UDate date = format_.parse(whole, position);
        if (position.getErrorIndex() >= 0 || position.getIndex() != whole.length()) return std::nullopt;
        return static_cast<std::int64_t>(std::floor(date));
    }

  private:
    UErrorCode status_ = U_ZERO_ERROR;
    // Neither writing nor reading is safe on two threads at once.
    mutable std::mutex mutex_;
    mutable icu::SimpleDateFormat format_;
};

}  // namespace

std::shared_ptr<const TextualDateFormat> TextualDateFormat::make(std::string_view pattern, NSTimeZone zone) {
    auto format = std::make_shared<ICUDateFormat>(pattern, zone);
    return format->valid() ? format : nullptr;
}

}  // namespace zqcore::platform
