#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// Walks a text by user-perceived characters (extended grapheme clusters of UAX #29), front to back.
///
///     for (CharacterCursor cursor(text); auto character = cursor.next();) use(*character);
///
/// CR LF is one character. A byte that isn't UTF-8 stands alone. Runs of ASCII are cut without any Unicode
/// data, so that a process that sees only ASCII never loads it. Threads: an object belongs to one thread;
/// several may be interleaved. Lifetime: refers to the text.
class ZQ_EXPORT CharacterCursor final {
  public:
    explicit CharacterCursor(std::string_view text) noexcept : text_(text) {}

    /// The next character, or absent at the end.
    [[nodiscard]] std::optional<std::string_view> next() {
        if (position_ == text_.size()) return std::nullopt;
        // Between two ASCII characters there always is a boundary, but for CR LF.
        if (nextBreak_ == breakCount_ && isASCIIAt(position_) &&
            (position_ + 1 == text_.size() || (isASCIIAt(position_ + 1) && text_[position_] != '\r'))) {
            return text_.substr(position_++, 1);
        }
        return nextByRules();
    }

    /// How many bytes `next` has passed.
    [[nodiscard]] std::size_t position() const noexcept { return position_; }

  private:
    static constexpr std::size_t kBatch = 32;

    [[nodiscard]] bool isASCIIAt(std::size_t i) const noexcept {
        return static_cast<unsigned char>(text_[i]) < 0x80;
    }
    std::string_view nextByRules();
    void findBreaks();

    std::string_view text_;
    std::size_t position_ = 0;
    // The stretch that needs the rules ends here; boundaries in it are found in batches, so that no state of
    // the shared break iterator is kept between calls.
    std::size_t stretchEnd_ = 0;
    std::uint32_t nextBreak_ = 0;
    std::uint32_t breakCount_ = 0;
    std::array<std::size_t, kBatch> breaks_;
};

/// How many user-perceived characters `text` has.
[[nodiscard]] ZQ_EXPORT std::size_t characterCount(std::string_view text);

/// The value 0 to 15 of a scalar that is a hexadecimal digit of either case, ASCII or fullwidth; absent for
/// any other.
[[nodiscard]] constexpr std::optional<unsigned> hexDigitValue(char32_t scalar) noexcept {
    if (scalar >= 0xFF10 && scalar <= 0xFF5E) scalar -= 0xFEE0;
    if (scalar >= U'0' && scalar <= U'9') return scalar - U'0';
    if (scalar >= U'A' && scalar <= U'F') return scalar - U'A' + 10;
    if (scalar >= U'a' && scalar <= U'f') return scalar - U'a' + 10;
    return std::nullopt;
}

}  // namespace zqcore::platform
