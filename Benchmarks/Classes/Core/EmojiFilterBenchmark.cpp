// Peer: an ICU pattern replacement of the same class of characters, its pattern compiled once and its text
// already in UTF-16. It judges scalars, not sequences, which is the easier work. The second peer also pays
// for the way from UTF-8 and back, as a caller with our texts would.
#include <benchmark/benchmark.h>
#include <unicode/regex.h>
#include <unicode/unistr.h>

#include <cstdlib>
#include <string>

#include "Classes/Core/Category/NSStringRemoveEmoji.h"

namespace zqcore {
namespace {

constexpr std::size_t kSize = 4 << 20;

std::string repeated(std::string_view piece) {
    std::string text;
    while (text.size() < kSize) text += piece;
    return text;
}

const std::string& text(int which) {
    static const std::string kTexts[] = {
        repeated("人生若只如初见，何事秋风悲画扇。等闲变却故人心，却道故人心易变！骊山语罢清宵半，"
                 "“泪雨霖铃终不怨”——何如薄幸锦衣郎，比翼连枝当日愿。\n"),
        repeated("The quick brown fox jumps over the lazy dog, 42 times; then {it} sleeps.\n"),
        repeated("好😀的👍🏽，go👨‍👩‍👧 now🎉🎉❤️! 🇨🇳x"),
    };
    return kTexts[which];
}

UErrorCode status = U_ZERO_ERROR;

const icu::RegexPattern& pattern() {
    static const auto* const compiled = icu::RegexPattern::compile(
        uR"([\u00A9\u00AE\u10E6\u200D\u203C\u2049\u2100-\u27BF\u27F9\u2934\u2935\u2B05-\u2B07\u2B1B\u2B1C)"
        uR"(\u2B50\u2B55\u3030\u303D\u30C4\u3297\u3299\uFE0F\U0001D000-\U0001F77F\U0001F800-\U0001FBFF])",
        0, status);
    return *compiled;
}

void ours(benchmark::State& state, int which) {
    for (auto _ : state) benchmark::DoNotOptimize(zq_removingEmoji(text(which)));
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text(which).size()));
}

void pattern16(benchmark::State& state, int which) {
    const auto input = icu::UnicodeString::fromUTF8(text(which));
    const std::unique_ptr<icu::RegexMatcher> matcher(pattern().matcher(input, status));
    for (auto _ : state) {
        matcher->reset();
        benchmark::DoNotOptimize(matcher->replaceAll(icu::UnicodeString(), status));
    }
    if (U_FAILURE(status)) std::abort();
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text(which).size()));
}

void pattern8(benchmark::State& state, int which) {
    for (auto _ : state) {
        const auto input = icu::UnicodeString::fromUTF8(text(which));
        const std::unique_ptr<icu::RegexMatcher> matcher(pattern().matcher(input, status));
        std::string output;
        matcher->replaceAll(icu::UnicodeString(), status).toUTF8String(output);
        benchmark::DoNotOptimize(output);
    }
    if (U_FAILURE(status)) std::abort();
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text(which).size()));
}

BENCHMARK_CAPTURE(ours, emoji_chinese, 0)->Name("emoji/chinese/ours");
BENCHMARK_CAPTURE(pattern16, emoji_chinese, 0)->Name("emoji/chinese/icu");
BENCHMARK_CAPTURE(pattern8, emoji_chinese, 0)->Name("emoji/chinese/icu-utf8");
BENCHMARK_CAPTURE(ours, emoji_ascii, 1)->Name("emoji/ascii/ours");
BENCHMARK_CAPTURE(pattern16, emoji_ascii, 1)->Name("emoji/ascii/icu");
BENCHMARK_CAPTURE(pattern8, emoji_ascii, 1)->Name("emoji/ascii/icu-utf8");
BENCHMARK_CAPTURE(ours, emoji_rich, 2)->Name("emoji/rich/ours");
BENCHMARK_CAPTURE(pattern16, emoji_rich, 2)->Name("emoji/rich/icu");
BENCHMARK_CAPTURE(pattern8, emoji_rich, 2)->Name("emoji/rich/icu-utf8");

}  // namespace
}  // namespace zqcore
