#include "Platform/Foundation/TextualDateFormat.h"

#include <dlfcn.h>
#include <unicode/udat.h>
#include <unicode/uversion.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <mutex>

#include "Platform/Foundation/Text/Utf16.h"

namespace zqcore::platform {

namespace {

// ICU puts its version behind each name; the headers do it by macros.
#define ZQ_NAME_OF(function) #function
#define ZQ_NAME(function) ZQ_NAME_OF(function)

// Loaded at the first pattern with words, and kept. Nearly every process writes dates by numbers alone, and
// linking the library costs each of them more than a megabyte before `main`.
struct Library {
    decltype(&udat_open) open = nullptr;
    decltype(&udat_close) close = nullptr;
    decltype(&udat_setLenient) setLenient = nullptr;
    decltype(&udat_format) format = nullptr;
    decltype(&udat_parse) parse = nullptr;

    /// A null pointer where it isn't installed.
    static const Library* shared() {
        static const Library library;
        return library.loaded_ ? &library : nullptr;
    }

  private:
    Library() {
        void* handle = ::dlopen("libicui18n.so." U_ICU_VERSION_SHORT, RTLD_NOW | RTLD_LOCAL);
        const auto find = [handle](const char* name, auto& function) {
            function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(::dlsym(handle, name));
            return function != nullptr;
        };
        loaded_ = handle && find(ZQ_NAME(udat_open), open) && find(ZQ_NAME(udat_close), close) &&
                  find(ZQ_NAME(udat_setLenient), setLenient) && find(ZQ_NAME(udat_format), format) &&
                  find(ZQ_NAME(udat_parse), parse);
    }

    bool loaded_ = false;
};

/// "GMT+05:45:00"; the empty text stands for the process's own zone.
std::u16string zoneName(NSTimeZone zone) {
    const auto seconds = zone.fixedSeconds();
    if (!seconds) return {};
    if (*seconds == 0) return u"GMT";
    const int distance = std::abs(*seconds);
    std::array<char, 32> text;
    (void)std::snprintf(text.data(), text.size(), "GMT%c%02d:%02d:%02d", *seconds < 0 ? '-' : '+',
                        distance / 3600, distance / 60 % 60, distance % 60);
    return toUTF16(text.data());
}

class ICUDateFormat final : public TextualDateFormat {
  public:
    ICUDateFormat(const Library& library, std::string_view pattern, NSTimeZone zone) : library_(library) {
        const std::u16string name = zoneName(zone);
        const std::u16string wide = toUTF16(pattern);
        UErrorCode status = U_ZERO_ERROR;
        format_ = library_.open(UDAT_PATTERN, UDAT_PATTERN, "en_US_POSIX",
                                name.empty() ? nullptr : name.c_str(), static_cast<std::int32_t>(name.size()),
                                wide.c_str(), static_cast<std::int32_t>(wide.size()), &status);
        if (U_FAILURE(status)) {
            if (format_) library_.close(format_);
            format_ = nullptr;
        }
        if (format_) library_.setLenient(format_, false);
    }
    ~ICUDateFormat() override {
        if (format_) library_.close(format_);
    }
    ICUDateFormat(const ICUDateFormat&) = delete;
    ICUDateFormat& operator=(const ICUDateFormat&) = delete;

    [[nodiscard]] bool valid() const { return format_ != nullptr; }

    std::string write(std::int64_t milliseconds) const override {
        const std::scoped_lock lock(mutex_);
        std::u16string text(64, u'\0');
        for (;;) {
            UErrorCode status = U_ZERO_ERROR;
            const std::int32_t length =
                library_.format(format_, static_cast<UDate>(milliseconds), text.data(),
                                static_cast<std::int32_t>(text.size()), nullptr, &status);
            if (status != U_BUFFER_OVERFLOW_ERROR) {
                text.resize(U_SUCCESS(status) ? static_cast<std::size_t>(length) : 0);
                return fromUTF16(text);
            }
            text.resize(static_cast<std::size_t>(length));
        }
    }

    std::optional<std::int64_t> read(std::string_view text) const override {
        const std::u16string whole = toUTF16(text);
        const std::scoped_lock lock(mutex_);
        UErrorCode status = U_ZERO_ERROR;
        std::int32_t position = 0;
        const UDate date = library_.parse(format_, whole.data(), static_cast<std::int32_t>(whole.size()),
                                          &position, &status);
        if (U_FAILURE(status) || position != static_cast<std::int32_t>(whole.size())) return std::nullopt;
        return static_cast<std::int64_t>(std::floor(date));
    }

  private:
    const Library& library_;
    // Neither writing nor reading is safe on two threads at once.
    mutable std::mutex mutex_;
    UDateFormat* format_ = nullptr;
};

}  // namespace

std::shared_ptr<const TextualDateFormat> TextualDateFormat::make(std::string_view pattern, NSTimeZone zone) {
    const Library* library = Library::shared();
    if (!library) return nullptr;
    auto format = std::make_shared<ICUDateFormat>(*library, pattern, zone);
    return format->valid() ? format : nullptr;
}

}  // namespace zqcore::platform
