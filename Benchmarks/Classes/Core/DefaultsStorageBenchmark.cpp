// Peer: a plain load behind a shared pointer. Sixty-four settings a pass, so that the loop doesn't outweigh a
// read; the compiler has to take each of them anew.
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
        for (const auto& setting : settings) benchmark::DoNotOptimize(setting.wrappedValue());
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
        for (const auto& place : places) benchmark::DoNotOptimize(*place.value);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(plainLoad)->Name("defaults/read64/shared_ptr");

}  // namespace
}  // namespace zqcore
