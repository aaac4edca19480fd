// A picture in a text: 4 MB of base64 and the bytes behind it, beside a copy of the same text, each into
// fresh memory as a caller meets it. Sizes and speeds count the text.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <string>
#include <utility>

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

void count(benchmark::State& state, std::int64_t size) { state.SetBytesProcessed(state.iterations() * size); }

void encodeOurs(benchmark::State& state, std::int64_t size) {
    const auto bytes = picture(size);
    for (auto _ : state) benchmark::DoNotOptimize(encodeBase64(bytes));
    count(state, size);
}

void decodeOurs(benchmark::State& state, std::int64_t size) {
    const auto text = encodeBase64(picture(size));
    for (auto _ : state) benchmark::DoNotOptimize(decodeBase64(text));
    count(state, size);
}

void decodeLinesOurs(benchmark::State& state, std::int64_t size) {
    const auto text = encodeBase64(picture(size));
    std::string lines;
    for (std::size_t at = 0; at < text.size(); at += 76) lines += text.substr(at, 76) + "\r\n";
    for (auto _ : state) benchmark::DoNotOptimize(decodeBase64(lines));
    count(state, size);
}

void copyOfTheText(benchmark::State& state, std::int64_t size) {
    const auto text = encodeBase64(picture(size));
    for (auto _ : state) benchmark::DoNotOptimize(std::string(text));
    count(state, size);
}

const bool registered = [] {
    using Run = void (*)(benchmark::State&, std::int64_t);
    const std::pair<const char*, Run> kRuns[] = {
        {"base64/encode", encodeOurs}, {"base64/decode", decodeOurs}, {"base64/lines", decodeLinesOurs}};
    constexpr std::pair<const char*, std::int64_t> kSizes[] = {{"64", 64}, {"4k", 4 << 10}, {"4mb", 4 << 20}};
    for (const auto& [group, ours] : kRuns) {
        for (const auto& [name, size] : kSizes) {
            const auto full = std::string(group) + "/" + name;
            benchmark::RegisterBenchmark((full + "/ours").c_str(), ours, size);
            benchmark::RegisterBenchmark((full + "/copy").c_str(), copyOfTheText, size);
        }
    }
    return true;
}();

}  // namespace
