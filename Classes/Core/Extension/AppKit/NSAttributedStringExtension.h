#pragma once

#include <memory>
#include <optional>
#include <source_location>
#include <string_view>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSRange.h"
#include "Platform/Graphics/NSAttributedString.h"

namespace zqcore {

// Text with fonts and colours. Ranges count UTF-16 units. Threads: one at a time for each text.

/// A new text with the font and the colour that are given; null pointers leave them out. `String` is the
/// class that is made, plain or mutable.
template <class String = platform::NSAttributedString>
[[nodiscard]] std::shared_ptr<String> zq_create(std::string_view text,
                                                const std::shared_ptr<platform::NSFont>& font,
                                                const std::shared_ptr<platform::NSColor>& color) {
    return String::make(text, platform::NSTextAttributes{font, color});
}

/// Sets what is given over the range, over the whole text without one; the other attributes stay.
ZQ_EXPORT void zq_update(platform::NSMutableAttributedString& text,
                         const std::shared_ptr<platform::NSFont>& font,
                         const std::shared_ptr<platform::NSColor>& color,
                         std::optional<platform::NSRange> range = std::nullopt);

/// The same over every match of a regular expression in ICU's dialect, upper and lower case alike. An invalid
/// pattern changes nothing and gives one line at error level.
ZQ_EXPORT void zq_update(platform::NSMutableAttributedString& text,
                         const std::shared_ptr<platform::NSFont>& font,
                         const std::shared_ptr<platform::NSColor>& color, std::string_view pattern,
                         const std::source_location& where = std::source_location::current());

}  // namespace zqcore
