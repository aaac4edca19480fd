// A picture in a text: 4 MB of base64 and the bytes behind it, beside a copy of the same text, each into
// fresh memory as a caller meets it. Sizes and speeds count the text.
#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include "Platform/Foundation/Text/Base64.h"

namespace {

using namespace zqcore::platform;

/// The bytes of a text of that size.
std::string picture(std::int64_t textSize) {
    std::mt19937 random(7);
    std::string bytes(static_cast<std::size_t>(textSize / 4 * 3), '\0');
    for (auto& byte : bytes) byte = static_cast<char>(random());
    return bytes;
}

void count(benchmark::State& state) { state.SetBytesProcessed(state.iterations() * state.range(0)); }

void Base64Encode(benchmark::State& state) {
    const auto bytes = picture(state.range(0));
    for (auto _ : state) benchmark::DoNotOptimize(encodeBase64(bytes));
    count(state);
}
BENCHMARK(Base64Encode)->Arg(64)->Arg(4 << 10)->Arg(4 << 20);

void Base64Decode(benchmark::State& state) {
    const auto text = encodeBase64(picture(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(decodeBase64(text));
    count(state);
}
BENCHMARK(Base64Decode)->Arg(64)->Arg(4 << 10)->Arg(4 << 20);

void Base64DecodeLines(benchmark::State& state) {
    auto text = encodeBase64(picture(state.range(0)));
    std::string lines;
    for (std::size_t at = 0; at < text.size(); at += 76) lines += text.substr(at, 76) + "\r\n";
    for (auto _ : state) benchmark::DoNotOptimize(decodeBase64(lines));
    count(state);
}
BENCHMARK(Base64DecodeLines)->Arg(4 << 20);

void CopyOfTheText(benchmark::State& state) {
    const auto text = encodeBase64(picture(state.range(0)));
    for (auto _ : state) benchmark::DoNotOptimize(std::string(text));
    count(state);
}
BENCHMARK(CopyOfTheText)->Arg(64)->Arg(4 << 10)->Arg(4 << 20);

}  // namespace
