// Peer: a plain load behind a shared pointer. Sixty-four settings a pass, so that the loop doesn't outweigh a
// read. The sum makes both load the value itself: of a value alone the compiler is content to know the
// address. Unrolled, since a loop of five instructions doubles its time where it straddles a line of code.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "Classes/Core/Utility/DefaultsStorage.h"
#include "TestKit/TemporaryHome.h"

namespace zqcore {
namespace {

constexpr int kSettings = 64;

void ours(benchmark::State& state) {
    const testkit::TemporaryHome home;
    std::vector<DefaultsStorage<std::int64_t>> settings;
    for (int i = 0; i < kSettings; ++i) {
        settings.emplace_back(i, "setting" + std::to_string(i), NSUserDefaults::standardUserDefaults());
    }
    for (auto _ : state) {
        std::int64_t total = 0;
#pragma GCC unroll 16
        for (const auto& setting : settings) total += setting.wrappedValue();
        benchmark::DoNotOptimize(total);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(ours)->Name("defaults/read64/ours");

void plainLoad(benchmark::State& state) {
    // As far apart as settings lie.
    struct Place {
        std::shared_ptr<std::int64_t> value;
        char beside[sizeof(DefaultsStorage<std::int64_t>) - sizeof(std::shared_ptr<std::int64_t>)];
    };
    std::vector<Place> places(kSettings);
    for (auto& place : places) place.value = std::make_shared<std::int64_t>(1);
    for (auto _ : state) {
        std::int64_t total = 0;
#pragma GCC unroll 16
        for (const auto& place : places) total += *place.value;
        benchmark::DoNotOptimize(total);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(plainLoad)->Name("defaults/read64/shared_ptr");

}  // namespace
}  // namespace zqcore
