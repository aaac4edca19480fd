#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Base/Export.h"

namespace zqcore {

// Finding and taking out emoji. A text is judged by composed character sequences (UAX #29), each of them by
// its first character: it counts if that lies in U+2100 to U+27BF or U+1D000 to U+1F77F, or is one of the
// listed ones. That is wider than Unicode's own property: arrows, U+2122 and the katakana U+30C4 count as
// well. A keycap counts as a whole, its plain digit doesn't. Flags and skin-tone sequences go as one.
//
// Texts are UTF-8; bytes that aren't stay as they are. Threads: pure functions, any thread. Failure: none.

/// Whether `text` counts as an emoji, by the whole text or its first character; what comes later is not
/// looked at. False for the empty text.
[[nodiscard]] ZQ_EXPORT bool zq_containsEmoji(std::string_view text) noexcept;

/// Whether `text` is one of the 23 listed keycaps, or begins with a listed character.
[[nodiscard]] ZQ_EXPORT bool isFuckEmoji(std::string_view text) noexcept;

/// `text` without its emoji.
[[nodiscard]] ZQ_EXPORT std::string zq_removingEmoji(std::string_view text);

/// `text` with `replacement` once in the place of each emoji sequence.
[[nodiscard]] ZQ_EXPORT std::string zq_stringByReplaceingEmojiWithString(std::string_view text,
                                                                         std::string_view replacement);

/// The emoji sequences of `text` in order: joined, one by one, and as ranges in the form "{5, 2}", location
/// and length in UTF-16 units.
[[nodiscard]] ZQ_EXPORT std::string zq_allEmojiString(std::string_view text);
[[nodiscard]] ZQ_EXPORT std::vector<std::string> zq_allEmoji(std::string_view text);
[[nodiscard]] ZQ_EXPORT std::vector<std::string> zq_allEmojiRanges(std::string_view text);

/// The emoji that a picker offers, in its order, and at its end some decorations that are no emoji proper.
[[nodiscard]] ZQ_EXPORT std::string zq_allSystemEmoji();

}  // namespace zqcore
