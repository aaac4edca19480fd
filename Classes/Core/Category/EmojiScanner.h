#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore {

/// Whether a sequence that begins with `scalar` is an emoji, keycaps apart.
[[nodiscard]] bool countsAsEmoji(char32_t scalar) noexcept;

/// Whether `scalar` is in the list of single characters, by its first UTF-16 unit.
[[nodiscard]] bool isListedEmoji(char32_t scalar) noexcept;

/// Whether `text` is one of the keycaps in the list.
[[nodiscard]] bool isListedKeycap(std::string_view text) noexcept;

/// Finds the emoji sequences of a text from front to back, without cutting the rest of it into sequences.
/// Threads: an object belongs to one thread. Lifetime: refers to the text.
class EmojiScanner final {
  public:
    struct Found {
        std::size_t begin;
        std::size_t end;
    };

    explicit EmojiScanner(std::string_view text) noexcept : text_(text) {}

    /// The next sequence, as byte offsets; absent at the end.
    [[nodiscard]] std::optional<Found> next();

  private:
    struct Candidate {
        std::size_t begin;
        platform::DecodedScalar scalar;
    };
    [[nodiscard]] Candidate candidate(std::size_t from) const noexcept;
    [[nodiscard]] platform::DecodedScalar scalarAt(std::size_t position) const noexcept;
    [[nodiscard]] std::optional<Found> keycapAround(std::size_t mark) const;

    std::string_view text_;
    std::size_t position_ = 0;
    // The last place where a sequence is known to begin; nothing before it has to be looked at.
    std::size_t floor_ = 0;
};

}  // namespace zqcore
