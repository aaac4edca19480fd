#pragma once

#include <cstddef>
#include <optional>
#include <source_location>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Base/Data.h"
#include "Platform/Base/Export.h"
#include "Platform/Foundation/Text/NSCharacterSet.h"
#include "Platform/Foundation/Text/NSStringSearch.h"
#include "Platform/Foundation/Text/TextRange.h"

namespace zqcore {

// Operations on texts, which are UTF-8. Bytes that aren't stay where they are, unless it is said otherwise.
// Threads: pure functions, any thread. Failure: none; each falls back to a defined result.

/// Whether `regex`, in ICU's dialect, matches the whole of `text`. False if either is empty. An invalid
/// pattern gives false and one line at error level.
[[nodiscard]] ZQ_EXPORT bool zq_matchRegex(
    std::string_view text, std::string_view regex,
    const std::source_location& where = std::source_location::current());

/// The pieces between the separators, empty ones left out.
[[nodiscard]] ZQ_EXPORT std::vector<std::string> zq_componentsFilterEmpty(std::string_view text,
                                                                          std::string_view separatedBy);

/// `text` without blanks and line ends of any script at both ends, U+200B among them.
[[nodiscard]] ZQ_EXPORT std::string zq_trimmingWhitespaceAndNewline(std::string_view text);
/// The same as a view into `text`.
[[nodiscard]] ZQ_EXPORT std::string_view trimmedView(std::string_view text) noexcept;

/// Each run of white space, also one of a single tab or line end, becomes one blank.
[[nodiscard]] ZQ_EXPORT std::string zq_replacingMultipleWhitespaceToSingle(std::string_view text);
/// Each run of U+000A, U+000D and U+2028 becomes one line feed.
[[nodiscard]] ZQ_EXPORT std::string zq_replacingMultipleNewLineToSingle(std::string_view text);

/// Only the scalars of `text` that are in the set.
[[nodiscard]] ZQ_EXPORT std::string zq_removingCharacters(std::string_view text,
                                                          const NSCharacterSet& exceptIn);

/// `&`, both quotation marks, `>` and `<` as "&amp;", "&quot;", "&#x27;", "&gt;" and "&lt;".
[[nodiscard]] ZQ_EXPORT std::string zq_escapingXML(std::string_view text);
/// The way back, "&#39;" and "&#x92;" as apostrophe and "&#x96;" as `-` included. "&amp;" is resolved first,
/// so "&amp;lt;" gives "<".
[[nodiscard]] ZQ_EXPORT std::string zq_unescapingXML(std::string_view text);

/// All places of `of` in `text`, as byte offsets, none overlapping. `options` are bits of
/// NSStringCompareOptions: without any, canonical equivalents are found, and whole characters only.
[[nodiscard]] ZQ_EXPORT std::vector<TextRange> zq_ranges(std::string_view text, std::string_view of,
                                                         unsigned options = 0);

/// How many UTF-16 units `text` has: an emoji outside the basic plane has 2.
[[nodiscard]] ZQ_EXPORT std::size_t zq_NSStringLength(std::string_view text);

/// The text, or absent if it is empty.
[[nodiscard]] ZQ_EXPORT std::optional<std::string> asNotEmpty(std::string text);

/// The text in the platform's own units, UTF-16. A byte that isn't UTF-8 becomes U+FFFD.
[[nodiscard]] ZQ_EXPORT std::u16string toNSString(std::string_view text);

/// The text's bytes; absent if they aren't UTF-8.
[[nodiscard]] ZQ_EXPORT std::optional<Data> toUTF8Data(std::string text);

}  // namespace zqcore
