// The whole road of a request between two processes: prepare, encode, bus, dispatch, handle, encode, bus,
// decode, completion. Its peer is a plain sd-bus call that carries the same bytes both ways to a plain sd-bus
// server. Both sides run without info lines.
#include <benchmark/benchmark.h>
#include <systemd/sd-bus.h>

#include <string>

#include "Benchmarks/Classes/AppleScript/RoadRequest.h"
#include "Classes/AppleScript/BridgeSender/BridgeSender.h"
#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Dispatch/RunLoop.h"
#include "TestKit/ChildProcess.h"
#include "TestKit/LogCapture.h"
#include "TestKit/PrivateBus.h"

namespace zqcore::bench {
namespace {

/// The bus and the two servers, made at the first measurement.
struct Road {
    Road() {
        // Each server prints a line when it serves.
        ready = ours.readLine() && bare.readLine() && sd_bus_open_user(&bus) >= 0;
    }
    static Road& shared() {
        static Road road;
        return road;
    }

    testkit::PrivateBus privateBus;
    testkit::ChildProcess ours{{std::string(ZQ_BENCH_PROGRAMS) + "/RoadServer", "ours"}};
    testkit::ChildProcess bare{{std::string(ZQ_BENCH_PROGRAMS) + "/RoadServer", "bare"}};
    sd_bus* bus = nullptr;
    bool ready = false;
};

[[nodiscard]] std::shared_ptr<RoadRequest> makeRequest(std::size_t size) {
    auto request = RoadRequest::make();
    request->requestValue->body = std::make_shared<RoadRequest::Body>();
    request->requestValue->body->text = std::string(size, 'a');
    return request;
}

void ours(benchmark::State& state, std::size_t size, int inFlight) {
    if (!Road::shared().ready) return state.SkipWithError("a server of the road didn't start");
    const testkit::LogCapture log(logging::kFlagError);
    const auto body = makeRequest(size)->requestValue->body;
    const BridgeSender sender(kOurServer);
    int open = 0;
    for (auto _ : state) {
        open = inFlight;
        for (int i = 0; i < inFlight; ++i) {
            auto request = RoadRequest::make();
            request->requestValue->body = body;
            sender.request(request, [&](BridgeSender::Status status, const auto& answered) {
                if (status != BridgeSender::Status::success || !answered->responseValue->body)
                    state.SkipWithError("the road is broken");
                if (--open == 0) RunLoop::main().stop();
            });
        }
        RunLoop::main().run();
    }
    state.SetItemsProcessed(state.iterations() * inFlight);
}

/// What the bare road waits for.
struct Flight {
    int open = 0;
    bool failed = false;
};

int onAnswer(sd_bus_message* message, void* context, sd_bus_error*) {
    auto& flight = *static_cast<Flight*>(context);
    const char* text = nullptr;
    if (sd_bus_message_read(message, "s", &text) >= 0) {
        benchmark::DoNotOptimize(std::string(text));
    } else {
        flight.failed = true;
    }
    --flight.open;
    return 1;
}

/// One call after the other; false if one failed.
bool callBare(sd_bus* bus, const std::string& text) {
    sd_bus_message* answer = nullptr;
    const char* result = nullptr;
    const bool answered = sd_bus_call_method(bus, kBareServer, kBarePath, kBareInterface, "request", nullptr,
                                             &answer, "s", text.c_str()) >= 0 &&
                          sd_bus_message_read(answer, "s", &result) >= 0;
    if (answered) benchmark::DoNotOptimize(std::string(result));
    sd_bus_message_unref(answer);
    return answered;
}

/// Several calls at once; false as soon as one failed.
bool flyBare(sd_bus* bus, const std::string& text, Flight& flight, int inFlight) {
    for (flight.open = 0; flight.open < inFlight; ++flight.open) {
        if (sd_bus_call_method_async(bus, nullptr, kBareServer, kBarePath, kBareInterface, "request",
                                     &onAnswer, &flight, "s", text.c_str()) < 0)
            return false;
    }
    while (flight.open > 0) {
        const int done = sd_bus_process(bus, nullptr);
        if (done < 0 || flight.failed) return false;
        if (done == 0 && sd_bus_wait(bus, UINT64_MAX) < 0) return false;
    }
    return true;
}

void bare(benchmark::State& state, std::size_t size, int inFlight) {
    if (!Road::shared().ready) return state.SkipWithError("a server of the road didn't start");
    sd_bus* bus = Road::shared().bus;
    const auto request = makeRequest(size);
    request->clientPrepareRequestValue();
    const std::string text = request->requestValue->encodeToJSONString().value_or("");
    // A late answer may come after a failure.
    static Flight flight;
    for (auto _ : state) {
        if (inFlight == 1 ? callBare(bus, text) : flyBare(bus, text, flight, inFlight)) continue;
        state.SkipWithError("the bare road is broken");
        break;
    }
    state.SetItemsProcessed(state.iterations() * inFlight);
}

constexpr std::size_t kSmall = 850;  // with its envelope 1 KB
constexpr std::size_t kLarge = 4 << 20;

BENCHMARK_CAPTURE(ours, small, kSmall, 1)->Name("road/1k/ours")->UseRealTime();
BENCHMARK_CAPTURE(bare, small, kSmall, 1)->Name("road/1k/bare_sdbus")->UseRealTime();
BENCHMARK_CAPTURE(ours, pipelined, kSmall, 8)->Name("road/1k_pipelined/ours")->UseRealTime();
BENCHMARK_CAPTURE(bare, pipelined, kSmall, 8)->Name("road/1k_pipelined/bare_sdbus")->UseRealTime();
BENCHMARK_CAPTURE(ours, large, kLarge, 1)
    ->Name("road/4mb/ours")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(bare, large, kLarge, 1)
    ->Name("road/4mb/bare_sdbus")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace zqcore::bench
