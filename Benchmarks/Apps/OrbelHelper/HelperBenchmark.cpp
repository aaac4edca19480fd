// The resident helper as a session meets it: the time from its start to its first answer over a bus of its
// own, and the memory it keeps when it is idle after that. Both have absolute bars.
#include <benchmark/benchmark.h>
#include <systemd/sd-bus.h>

#include <chrono>
#include <fstream>
#include <string>
#include <string_view>
#include <thread>

#include "TestKit/ChildProcess.h"
#include "TestKit/PrivateBus.h"
#include "TestKit/TemporaryHome.h"

namespace zqcore::bench {
namespace {

constexpr const char* kHelper = "com.tessaradev.OrbelHelper";
constexpr const char* kHelperPath = "/com/tessaradev/OrbelHelper";
constexpr const char* kInterface = "com.tessara.ZQCore.Scripting";
constexpr const char* kQuestion = R"({"path":"info","requestId":"first","client":{}})";

/// A connection by bare sd-bus, which shares no page with the helper that it wouldn't share with any client.
class Client {
  public:
    Client() {
        const std::string rule =
            "type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',arg0='" +
            std::string(kHelper) + "'";
        connected_ = sd_bus_open_user(&bus_) >= 0 &&
                     sd_bus_add_match(bus_, nullptr, rule.c_str(), &Client::onOwner, this) >= 0;
    }
    ~Client() { sd_bus_flush_close_unref(bus_); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    /// Waits until the helper's name is taken or free. Gives false when it takes too long.
    [[nodiscard]] bool waitUntil(bool taken) {
        constexpr std::uint64_t kPatience = 5'000'000;
        while (connected_ && taken_ != taken) {
            const int progress = sd_bus_process(bus_, nullptr);
            if (progress < 0 || (progress == 0 && sd_bus_wait(bus_, kPatience) <= 0)) return false;
        }
        return connected_;
    }

    [[nodiscard]] bool ask() {
        sd_bus_message* answer = nullptr;
        const char* text = nullptr;
        const bool answered = sd_bus_call_method(bus_, kHelper, kHelperPath, kInterface, "request", nullptr,
                                                 &answer, "s", kQuestion) >= 0 &&
                              sd_bus_message_read(answer, "s", &text) >= 0 &&
                              std::string_view(text).find(kHelper) != std::string_view::npos;
        sd_bus_message_unref(answer);
        return answered;
    }

  private:
    static int onOwner(sd_bus_message* message, void* self, sd_bus_error*) {
        const char *name = nullptr, *before = nullptr, *now = nullptr;
        if (sd_bus_message_read(message, "sss", &name, &before, &now) >= 0)
            static_cast<Client*>(self)->taken_ = *now != '\0';
        return 0;
    }

    sd_bus* bus_ = nullptr;
    bool connected_ = false;
    bool taken_ = false;
};

/// A line of /proc/PID/smaps_rollup in bytes (proc(5)).
[[nodiscard]] double memory(pid_t process, std::string_view line) {
    std::ifstream rollup("/proc/" + std::to_string(process) + "/smaps_rollup");
    std::string word;
    for (double kibibytes = 0; rollup >> word;) {
        if (word == line && rollup >> kibibytes) return kibibytes * 1024;
    }
    return 0;
}

void start(benchmark::State& state) {
    const testkit::TemporaryHome home;
    const testkit::PrivateBus bus;
    Client client;
    double resident = 0, proportional = 0;
    for (auto _ : state) {
        // The shell becomes the helper; its log lines are for nobody here.
        testkit::ChildProcess helper({"sh", "-c", "exec \"$0\" 2>/dev/null", ZQ_BENCH_HELPER});
        const bool answered = client.waitUntil(true) && client.ask();
        state.PauseTiming();
        if (answered && resident == 0) {
            // What the start left running ends meanwhile.
            std::this_thread::sleep_for(std::chrono::milliseconds(500));
            resident = memory(helper.pid(), "Rss:");
            proportional = memory(helper.pid(), "Pss:");
        }
        helper.kill();
        const bool gone = client.waitUntil(false);
        state.ResumeTiming();
        if (!answered || !gone || resident == 0) {
            state.SkipWithError("the helper doesn't answer");
            break;
        }
    }
    state.counters["resident_bytes"] = resident;
    state.counters["proportional_bytes"] = proportional;
}
BENCHMARK(start)->Name("helper/start/ours")->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace zqcore::bench
