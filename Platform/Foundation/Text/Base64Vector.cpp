// The vector forms of base64 by W. Mula and D. Lemire, "Faster Base64 Encoding and Decoding using AVX2
// Instructions", ACM Transactions on the Web 12 (2018). They run where the processor has AVX2.
#include "Platform/Foundation/Text/Base64Vector.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace zqcore::platform::base64 {

#if defined(__x86_64__)
namespace {

#define ZQ_AVX2 __attribute__((target("avx2"), always_inline)) inline
#define ZQ_AVX2_ENTRY __attribute__((target("avx2")))

bool hasAVX2() noexcept {
    static const bool has = __builtin_cpu_supports("avx2") != 0;
    return has;
}

ZQ_AVX2 __m256i both(__m128i lane) noexcept { return _mm256_broadcastsi128_si256(lane); }

/// Spreads 12 bytes of each lane to 16 numbers of six bits.
ZQ_AVX2 __m256i splitToSixBits(__m256i bytes) noexcept {
    const auto order = both(_mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
    const auto spread = _mm256_shuffle_epi8(bytes, order);
    const auto upper = _mm256_mulhi_epu16(_mm256_and_si256(spread, _mm256_set1_epi32(0x0FC0FC00)),
                                          _mm256_set1_epi32(0x04000040));
    const auto lower = _mm256_mullo_epi16(_mm256_and_si256(spread, _mm256_set1_epi32(0x003F03F0)),
                                          _mm256_set1_epi32(0x01000010));
    return _mm256_or_si256(upper, lower);
}

/// Each of the five ranges of the alphabet lies at one distance from its numbers.
ZQ_AVX2 __m256i toAlphabet(__m256i numbers) noexcept {
    const auto distances =
        both(_mm_setr_epi8(65, 71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16, 0, 0));
    const auto above = _mm256_cmpgt_epi8(numbers, _mm256_set1_epi8(25));
    const auto range = _mm256_sub_epi8(_mm256_subs_epu8(numbers, _mm256_set1_epi8(51)), above);
    return _mm256_add_epi8(numbers, _mm256_shuffle_epi8(distances, range));
}

ZQ_AVX2 __m256i encoded(const char* input) noexcept {
    const auto low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(input));
    const auto high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(input + 12));
    return toAlphabet(splitToSixBits(_mm256_set_m128i(high, low)));
}

ZQ_AVX2 void store(char* output, __m256i bytes) noexcept {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(output), bytes);
}

// Both walk with copies of the pointers: for all that the compiler knows, a store to the text could change
// the caller's. Several blocks a turn, since each is a chain of instructions that wait for one another.

ZQ_AVX2_ENTRY void encodeAVX2(const char*& input, const char* inputEnd, char*& output) noexcept {
    const char* from = input;
    char* to = output;
    for (; inputEnd - from >= 3 * 24 + 28; from += 96, to += 128) {
        const auto a = encoded(from);
        const auto b = encoded(from + 24);
        const auto c = encoded(from + 48);
        const auto d = encoded(from + 72);
        store(to, a);
        store(to + 32, b);
        store(to + 64, c);
        store(to + 96, d);
    }
    for (; inputEnd - from >= 28; from += 24, to += 32) store(to, encoded(from));
    input = from;
    output = to;
}

/// 32 characters: bits that are set where one is foreign, and 12 bytes at the beginning of each lane.
struct DecodedBlock {
    __m256i foreign;
    __m256i bytes;
};

ZQ_AVX2 DecodedBlock decoded(const char* input) noexcept {
    // A character is foreign if the bits of its two halves meet.
    const auto lowClass = both(_mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13,
                                             0x1A, 0x1B, 0x1B, 0x1B, 0x1A));
    const auto highClass = both(_mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10,
                                              0x10, 0x10, 0x10, 0x10, 0x10, 0x10));
    const auto distances = both(_mm_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0));
    const auto packOrder = both(_mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
    const auto slash = _mm256_set1_epi8(0x2F);
    const auto text = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(input));
    const auto highHalf = _mm256_and_si256(_mm256_srli_epi32(text, 4), slash);
    const auto lowHalf = _mm256_and_si256(text, slash);
    const auto foreign =
        _mm256_and_si256(_mm256_shuffle_epi8(lowClass, lowHalf), _mm256_shuffle_epi8(highClass, highHalf));
    const auto isSlash = _mm256_cmpeq_epi8(text, slash);
    const auto distance = _mm256_shuffle_epi8(distances, _mm256_add_epi8(isSlash, highHalf));
    const auto numbers = _mm256_add_epi8(text, distance);
    const auto pairs = _mm256_maddubs_epi16(numbers, _mm256_set1_epi32(0x01400140));
    const auto triples = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
    const auto packed = _mm256_shuffle_epi8(triples, packOrder);
    return {foreign, packed};
}

/// Cheaper than to move the lanes together first.
ZQ_AVX2 void storeLanes(char* output, __m256i bytes) noexcept {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(output), _mm256_castsi256_si128(bytes));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(output + 12), _mm256_extracti128_si256(bytes, 1));
}

ZQ_AVX2 bool isZero(__m256i bits) noexcept { return _mm256_testz_si256(bits, bits) != 0; }

ZQ_AVX2_ENTRY void decodeAVX2(const char*& input, const char* inputEnd, char*& output) noexcept {
    // Two blocks only, so that their values stay in registers.
    const char* from = input;
    char* to = output;
    for (; inputEnd - from >= 64; from += 64, to += 48) {
        const auto a = decoded(from);
        const auto b = decoded(from + 32);
        if (!isZero(_mm256_or_si256(a.foreign, b.foreign))) break;
        storeLanes(to, a.bytes);
        storeLanes(to + 24, b.bytes);
    }
    for (; inputEnd - from >= 32; from += 32, to += 24) {
        const auto block = decoded(from);
        if (!isZero(block.foreign)) break;
        storeLanes(to, block.bytes);
    }
    input = from;
    output = to;
}

}  // namespace

void encodeBlocks(const char*& input, const char* inputEnd, char*& output) noexcept {
    if (hasAVX2()) encodeAVX2(input, inputEnd, output);
}

void decodeBlocks(const char*& input, const char* inputEnd, char*& output) noexcept {
    if (hasAVX2()) decodeAVX2(input, inputEnd, output);
}

#else

void encodeBlocks(const char*&, const char*, char*&) noexcept {}
void decodeBlocks(const char*&, const char*, char*&) noexcept {}

#endif

}  // namespace zqcore::platform::base64
