// Ten thousand timers at rest until they are due: what it costs to start and to end them all, and the memory
// of each, which has a bar in bytes.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <memory>
#include <vector>

#include "Classes/Core/Utility/GCDTimer.h"

namespace zqcore {
namespace {

constexpr std::size_t kTimers = 10'000;

void storm(benchmark::State& state) {
    const auto queue = DispatchQueue::serial("storm");
    std::vector<std::shared_ptr<GCDTimer>> timers(kTimers);
    double bytes = 0;
    for (auto _ : state) {
        const auto before = mallinfo2().uordblks;
        for (std::size_t i = 0; i < kTimers; ++i) {
            timers[i] = GCDTimer::make(3600 + static_cast<double>(i), true, queue, [](GCDTimer&) {});
            timers[i]->fire();
        }
        bytes = static_cast<double>(mallinfo2().uordblks - before) / kTimers;
        for (auto& timer : timers) timer.reset();
    }
    state.counters["bytes"] = bytes;
}
BENCHMARK(storm)->Name("timers/storm10k/ours")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace zqcore
