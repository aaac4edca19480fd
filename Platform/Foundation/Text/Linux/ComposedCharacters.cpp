#include "Platform/Foundation/Text/ComposedCharacters.h"

#include <unicode/uchar.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

#include "Platform/Foundation/Text/Linux/CharacterBreaks.h"
#include "Platform/Foundation/Text/Utf8.h"

namespace zqcore::platform {
namespace {

/// What the rules of UAX #29 tell apart.
enum class Kind : std::uint8_t {
    other,        ///< joins with nothing but what extends it
    control,      ///< CR and LF among them
    extending,    ///< Extend
    spacingMark,  ///< SpacingMark
    joiner,       ///< U+200D
    regional,     ///< a regional indicator
    pictograph,   ///< Extended_Pictographic
    prefix,       ///< Prepend
    contextual    ///< Hangul and Indic consonants: left to the break iterator
};

Kind kindByData(char32_t scalar) {
    const auto code = static_cast<UChar32>(scalar);
    switch (u_getIntPropertyValue(code, UCHAR_GRAPHEME_CLUSTER_BREAK)) {
        case U_GCB_CONTROL:
        case U_GCB_CR:
        case U_GCB_LF:
            return Kind::control;
        case U_GCB_EXTEND:
            return Kind::extending;
        case U_GCB_SPACING_MARK:
            return Kind::spacingMark;
        case U_GCB_ZWJ:
            return Kind::joiner;
        case U_GCB_REGIONAL_INDICATOR:
            return Kind::regional;
        case U_GCB_L:
        case U_GCB_V:
        case U_GCB_T:
        case U_GCB_LV:
        case U_GCB_LVT:
            return Kind::contextual;
        case U_GCB_PREPEND:
            return Kind::prefix;
        default:
            break;
    }
    if (u_hasBinaryProperty(code, UCHAR_EXTENDED_PICTOGRAPHIC)) return Kind::pictograph;
    if (u_getIntPropertyValue(code, UCHAR_INDIC_SYLLABIC_CATEGORY) == U_INSC_CONSONANT) {
        return Kind::contextual;
    }
    return Kind::other;
}

constexpr std::size_t kPageSize = 256;
using Page = std::array<Kind, kPageSize>;
/// Kinds by pages of scalars, each looked up in the data when it is first needed: in a text of emoji a
/// look-up for every scalar would be most of the work. Pages are never freed; a process meets a handful.
std::array<std::atomic<const Page*>, 0x110000 / kPageSize> pages;

[[gnu::noinline]] const Page* makePage(std::size_t index) {
    auto made = std::make_unique<Page>();
    for (std::size_t i = 0; i < kPageSize; ++i) {
        (*made)[i] = kindByData(static_cast<char32_t>(index * kPageSize + i));
    }
    const Page* expected = nullptr;
    if (!pages[index].compare_exchange_strong(expected, made.get(), std::memory_order_acq_rel))
        return expected;
    return made.release();
}

Kind kindOf(char32_t scalar) {
    const std::size_t index = scalar / kPageSize;
    const auto* page = pages[index].load(std::memory_order_acquire);
    if (!page) page = makePage(index);
    return (*page)[scalar % kPageSize];
}

bool isASCII(char byte) { return static_cast<signed char>(byte) >= 0; }

bool extends(Kind kind) {
    return kind == Kind::extending || kind == Kind::spacingMark || kind == Kind::joiner;
}

/// The scalar that ends at `end`, and where it begins.
struct Previous {
    std::size_t begin;
    Kind kind;
};

Previous previousScalar(std::string_view text, std::size_t floor, std::size_t end) {
    if (isASCII(text[end - 1])) return {end - 1, kindOf(static_cast<char32_t>(text[end - 1]))};
    std::size_t begin = end - 1;
    while (begin > floor && end - begin < 4 && (static_cast<unsigned char>(text[begin]) & 0xC0U) == 0x80U) {
        --begin;
    }
    const auto scalar = firstScalar(text.substr(begin, end - begin));
    // Anything that isn't one whole scalar ends in a stray byte.
    if (begin + scalar.length != end) return {end - 1, Kind::other};
    return {begin, kindOf(scalar.value)};
}

/// Whether the joiner that ends at `end` ties what follows to a pictograph before it.
bool joinsPictograph(std::string_view text, std::size_t floor, std::size_t joiner) {
    std::size_t end = joiner;
    while (end > floor) {
        const auto previous = previousScalar(text, floor, end);
        if (previous.kind != Kind::extending) return previous.kind == Kind::pictograph;
        end = previous.begin;
    }
    return false;
}

/// Whether an odd number of regional indicators ends at `end`.
bool oddRegionals(std::string_view text, std::size_t floor, std::size_t end) {
    bool odd = false;
    while (end > floor) {
        const auto previous = previousScalar(text, floor, end);
        if (previous.kind != Kind::regional) break;
        odd = !odd;
        end = previous.begin;
    }
    return odd;
}

std::size_t endByIterator(std::string_view text, std::size_t begin) {
    std::size_t end = 0;
    return findCharacterBreaks(text.substr(begin), {&end, 1}) == 1 ? begin + end : text.size();
}

bool beginsByIterator(std::string_view text, std::size_t floor, std::size_t position) {
    while (floor < position) floor = endByIterator(text, floor);
    return floor == position;
}

}  // namespace

std::size_t composedSequenceEnd(std::string_view text, std::size_t begin, DecodedScalar first) {
    const Kind firstKind = kindOf(first.value);
    std::size_t end = begin + first.length;
    if (firstKind == Kind::control) return end;
    if (firstKind == Kind::contextual || firstKind == Kind::prefix) return endByIterator(text, begin);
    bool pairOpen = firstKind == Kind::regional;
    // A pictograph and what extends it can be joined to the next one, but for spacing marks.
    bool pictographOpen = firstKind == Kind::pictograph;
    bool afterJoiner = false;
    // No ASCII character joins what is before it.
    while (end < text.size() && !isASCII(text[end])) {
        const auto next = firstScalar(text.substr(end));
        const Kind kind = kindOf(next.value);
        if (extends(kind)) {
            pictographOpen = pictographOpen && kind != Kind::spacingMark && !afterJoiner;
            afterJoiner = kind == Kind::joiner;
        } else if (kind == Kind::pictograph && pictographOpen && afterJoiner) {
            afterJoiner = false;
        } else if (kind != Kind::regional || !pairOpen) {
            break;
        }
        pairOpen = false;
        end += next.length;
    }
    return end;
}

bool composedSequenceBegins(std::string_view text, std::size_t floor, std::size_t position,
                            DecodedScalar first) {
    if (position <= floor || position == text.size()) return true;
    const Kind kind = kindOf(first.value);
    const auto previous = previousScalar(text, floor, position);
    if (kind == Kind::control || previous.kind == Kind::control) return true;
    if (extends(kind) || previous.kind == Kind::prefix) return false;
    if (kind == Kind::contextual && (previous.kind == Kind::contextual || extends(previous.kind))) {
        return beginsByIterator(text, floor, position);
    }
    if (kind == Kind::pictograph && previous.kind == Kind::joiner) {
        return !joinsPictograph(text, floor, previous.begin);
    }
    if (kind == Kind::regional && previous.kind == Kind::regional) {
        return !oddRegionals(text, floor, position);
    }
    return true;
}

}  // namespace zqcore::platform
