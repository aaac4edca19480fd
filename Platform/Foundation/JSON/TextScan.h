#pragma once

#include <cstddef>
#include <cstdint>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

// Looking for the few characters that matter in long texts, 16 at a time. Private to the JSON coding.
namespace zqcore::platform::textscan {

/// What a scan stops at: a quote, a backslash, a control below U+0020; for writing also the slash.
enum class Stop : std::uint8_t { reading, writing };

template <Stop stop>
[[nodiscard]] inline bool stopsAt(char c) noexcept {
    if constexpr (stop == Stop::writing) {
        if (c == '/') return true;
    }
    return c == '"' || c == '\\' || static_cast<unsigned char>(c) < 0x20;
}

#ifdef __SSE2__

struct Block {
    __m128i bytes;
    unsigned stops;
    unsigned nonASCII;
};

template <Stop stop>
[[nodiscard]] inline Block load(const char* at) noexcept {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    __m128i hits = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('"'));
    hits = _mm_or_si128(hits, _mm_cmpeq_epi8(bytes, _mm_set1_epi8('\\')));
    // Unsigned byte <= 0x1F, which SSE2 says as min(byte, 0x1F) == byte.
    hits = _mm_or_si128(hits, _mm_cmpeq_epi8(_mm_min_epu8(bytes, _mm_set1_epi8(0x1F)), bytes));
    if constexpr (stop == Stop::writing) {
        hits = _mm_or_si128(hits, _mm_cmpeq_epi8(bytes, _mm_set1_epi8('/')));
    }
    return {bytes, static_cast<unsigned>(_mm_movemask_epi8(hits)),
            static_cast<unsigned>(_mm_movemask_epi8(bytes))};
}

#endif

/// The first character that the scan stops at, or `end`. `nonASCII` becomes true if a byte above 0x7F was
/// passed, and is left alone otherwise.
template <Stop stop>
[[nodiscard]] inline const char* findStop(const char* at, const char* end, bool& nonASCII) noexcept {
#ifdef __SSE2__
    while (end - at >= 16) {
        const Block block = load<stop>(at);
        if (block.stops != 0) {
            const unsigned before = (block.stops & (0U - block.stops)) - 1;
            nonASCII |= (block.nonASCII & before) != 0;
            return at + __builtin_ctz(block.stops);
        }
        nonASCII |= block.nonASCII != 0;
        at += 16;
    }
#endif
    while (at < end && !stopsAt<stop>(*at)) {
        nonASCII |= static_cast<unsigned char>(*at) >= 0x80;
        ++at;
    }
    return at;
}

}  // namespace zqcore::platform::textscan
