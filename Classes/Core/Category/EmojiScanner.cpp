#include "Classes/Core/Category/EmojiScanner.h"

#include <bit>
#include <cstring>

#include "Platform/Foundation/Text/ComposedCharacters.h"
#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore {
namespace {

constexpr char32_t kVariationSelector = 0xFE0F;
constexpr char32_t kKeycapMark = 0x20E3;
constexpr std::string_view kSelectorThenMark = "\xEF\xB8\x8F\xE2\x83\xA3";
constexpr std::string_view kMarkThenSelector = "\xE2\x83\xA3\xEF\xB8\x8F";

constexpr bool within(char32_t scalar, char32_t first, char32_t last) {
    return scalar >= first && scalar <= last;
}

using Block = std::uint8_t __attribute__((vector_size(16)));
constexpr std::size_t kBlock = sizeof(Block);

Block load(const char* bytes) noexcept {
    Block block;
    std::memcpy(&block, bytes, kBlock);
    return block;
}

using Halves = std::uint64_t __attribute__((vector_size(16)));

/// Where in a block of comparison results the first match lies; the block's size if nowhere.
std::size_t firstMatch(Block matches) noexcept {
    const auto halves = (Halves)matches;
    static_assert(std::endian::native == std::endian::little);
    if (halves[0] != 0) return static_cast<std::size_t>(std::countr_zero(halves[0])) / 8;
    if (halves[1] != 0) return 8 + static_cast<std::size_t>(std::countr_zero(halves[1])) / 8;
    return kBlock;
}

/// Where the next byte outside ASCII lies, in steps of four blocks: at most a step before it.
std::size_t passASCII(std::string_view text, std::size_t position) noexcept {
    while (position + 4 * kBlock <= text.size()) {
        const char* bytes = text.data() + position;
        const auto halves = (Halves)(load(bytes) | load(bytes + kBlock) | load(bytes + 2 * kBlock) |
                                     load(bytes + 3 * kBlock));
        if ((halves[0] | halves[1]) & 0x8080808080808080U) break;
        position += 4 * kBlock;
    }
    return position;
}

/// Marks where the bytes may begin a character that counts, or the keycap mark: never misses one, and hits
/// little else, since each test more is paid for at every byte. `b0`, `b1` and `b2` are the same text, each
/// shifted by a byte.
Block mayBegin(Block b0, Block b1, Block b2) noexcept {
    const auto fourBytes = b0 == 0xF0;
    // U+20C0 to U+2B7F, and of the punctuation before them what ends like the listed ones.
    const auto symbols =
        (b0 == 0xE2) & ((b1 - 0x83 <= 0xAD - 0x83) | (b2 == 0x8D) | (b2 == 0xBC) | (b2 == 0x89));
    const auto eastAsian =
        (b0 == 0xE3) & ((b2 == 0x84) | (b2 == 0x97) | (b2 == 0x99) | (b2 == 0xB0) | (b2 == 0xBD));
    const auto selector = (b0 == 0xEF) & (b2 == 0x8F);
    const auto latin = (b0 == 0xC2) & ((b1 == 0xA9) | (b1 == 0xAE));
    const auto georgian = (b0 == 0xE1) & (b2 == 0xA6);
    return (Block)(fourBytes | symbols | eastAsian | selector | latin | georgian);
}

bool isASCII(char byte) noexcept { return static_cast<signed char>(byte) >= 0; }

bool isCandidate(char32_t scalar) noexcept { return countsAsEmoji(scalar) || scalar == kKeycapMark; }

}  // namespace

bool countsAsEmoji(char32_t scalar) noexcept {
    return within(scalar, 0x1D000, 0x1F77F) || within(scalar, 0x2100, 0x27BF) || isListedEmoji(scalar);
}

bool isListedEmoji(char32_t scalar) noexcept {
    // Most of what a text has lies here, between the last two symbols of the list and its surrogates.
    if (scalar < 0x00A9 || within(scalar, 0x329A, 0xFE0E)) return false;
    // The list is of UTF-16 units; these are all that can begin a text, the last two as high surrogates.
    switch (scalar < 0x10000 ? scalar : 0xD7C0 + (scalar >> 10U)) {
        case 0x00A9:
        case 0x00AE:
        case 0x10E6:
        case 0x200D:
        case 0x203C:
        case 0x2049:
        case 0x2640:
        case 0x2642:
        case 0x27F9:
        case 0x2934:
        case 0x2935:
        case 0x2B05:
        case 0x2B06:
        case 0x2B07:
        case 0x2B1B:
        case 0x2B1C:
        case 0x2B50:
        case 0x2B55:
        case 0x3030:
        case 0x303D:
        case 0x30C4:
        case 0x3297:
        case 0x3299:
        case 0xFE0F:
        case 0xD83C:
        case 0xD83E:
            return true;
        default:
            return false;
    }
}

bool isListedKeycap(std::string_view text) noexcept {
    if (text.size() != 1 + kSelectorThenMark.size()) return false;
    const char key = text[0];
    const auto mark = text.substr(1);
    if (key == '*') return mark == kSelectorThenMark;
    return (key == '#' || (key >= '0' && key <= '9')) &&
           (mark == kSelectorThenMark || mark == kMarkThenSelector);
}

DecodedScalar EmojiScanner::scalarAt(std::size_t position) const noexcept {
    return firstScalar({text_.data() + position, text_.size() - position});
}

EmojiScanner::Candidate EmojiScanner::candidate(std::size_t from) const noexcept {
    std::size_t position = from;
    // Emoji like company, and what stands between two of them is short.
    if (from < text_.size() && static_cast<unsigned char>(text_[from]) >= 0xEF) {
        const auto scalar = scalarAt(from);
        if (isCandidate(scalar.value)) return {from, scalar};
    }
    while (position + kBlock + 2 <= text_.size()) {
        const char* bytes = text_.data() + position;
        const std::size_t match = firstMatch(mayBegin(load(bytes), load(bytes + 1), load(bytes + 2)));
        position += match;
        if (match == kBlock) {
            if (isASCII(bytes[kBlock - 1])) position = passASCII(text_, position);
            continue;
        }
        const auto scalar = scalarAt(position);
        if (isCandidate(scalar.value)) return {position, scalar};
        ++position;
    }
    for (; position < text_.size(); ++position) {
        const auto scalar = scalarAt(position);
        if (isCandidate(scalar.value)) return {position, scalar};
    }
    return {position, {}};
}

/// The keycap that the selector or mark at `mark` belongs to.
std::optional<EmojiScanner::Found> EmojiScanner::keycapAround(std::size_t mark) const {
    if (mark <= floor_) return std::nullopt;
    const std::size_t begin = mark - 1;
    const auto keycap = text_.substr(begin, 1 + kSelectorThenMark.size());
    if (!isListedKeycap(keycap)) return std::nullopt;
    if (!composedSequenceBegins(text_, floor_, begin)) return std::nullopt;
    const std::size_t end = composedSequenceEnd(text_, begin);
    if (end != begin + keycap.size()) return std::nullopt;
    return Found{begin, end};
}

std::optional<EmojiScanner::Found> EmojiScanner::next() {
    for (;;) {
        const auto [begin, scalar] = candidate(position_);
        if (begin >= text_.size()) return std::nullopt;
        std::optional<Found> found;
        if (scalar.value != kKeycapMark &&
            (begin == floor_ || composedSequenceBegins(text_, floor_, begin, scalar))) {
            found = Found{begin, composedSequenceEnd(text_, begin, scalar)};
        } else if (scalar.value == kKeycapMark || scalar.value == kVariationSelector) {
            found = keycapAround(begin);
        }
        if (found) {
            position_ = floor_ = found->end;
            return found;
        }
        position_ = begin + scalar.length;
    }
}

}  // namespace zqcore
