// What one log call costs its caller, and what a line costs in all, beside an asynchronous peer that writes
// the same line to the same kind of file.
#include <benchmark/benchmark.h>
#include <spdlog/async.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "Classes/Log/Log/ZQFileLogFormatter.h"
#include "Classes/Log/Log/ZQLog.h"
#include "Platform/Lumberjack/DDFileLogger.h"
#include "Platform/Lumberjack/DDLog.h"
#include "Platform/Lumberjack/DDLogFileManagerDefault.h"
#include "TestKit/LogCapture.h"

namespace {

using namespace zqcore;

constexpr std::size_t kQueueSize = 8192;
// Lines of one burst: fewer than the peer's queue holds, so that its caller never waits.
constexpr int kBurst = 4000;
constexpr int kSustained = 200'000;

/// A directory that goes with the process's benchmarks.
const std::string& directory() {
    struct Directory {
        std::string path =
            std::filesystem::temp_directory_path() / ("zqcore-bench-" + std::to_string(::getpid()));
        ~Directory() { std::filesystem::remove_all(path); }
    };
    static const Directory made;
    return made.path;
}

constexpr std::string_view kText = "request 1234567 of com.example.client was answered with status success";

class Ours {
  public:
    Ours() {
        auto output = DDFileLogger::make(DDLogFileManagerDefault::make(directory() + "/ours", "bench"));
        output->setLogFormatter(std::make_shared<ZQFileLogFormatter>());
        ddlog_->addLogger(std::move(output));
        DDLog::flushLog();
    }
    void log() { ZQLogInfo(kText, ddlog_.get()); }
    void flush() { DDLog::flushLog(); }

  private:
    // Keeps the stored level of the machine out; the lines go to a logger of their own.
    testkit::LogCapture capture_{7};
    std::shared_ptr<DDLog> ddlog_ = DDLog::make();
};

class Peer {
  public:
    Peer() { make(); }
    ~Peer() { spdlog::drop_all(); }
    void log() {
        const std::source_location where = std::source_location::current();
        if (logger_->should_log(spdlog::level::info)) {
            logger_->log({where.file_name(), static_cast<int>(where.line()), where.function_name()},
                         spdlog::level::info, kText);
        }
    }
    /// It can't be waited for but by ending its pool.
    void flush() {
        logger_.reset();
        pool_.reset();
        make();
    }

  private:
    void make() {
        pool_ = std::make_shared<spdlog::details::thread_pool>(kQueueSize, 1);
        logger_ = std::make_shared<spdlog::async_logger>(
            "peer", std::make_shared<spdlog::sinks::basic_file_sink_st>(directory() + "/peer.log", true),
            pool_, spdlog::async_overflow_policy::block);
        logger_->set_pattern("[%Y-%m-%d %H:%M:%S.%e ● %s ● %# ● %L] %! ● %v");
    }
    std::shared_ptr<spdlog::details::thread_pool> pool_;
    std::shared_ptr<spdlog::async_logger> logger_;
};

/// The caller's share, the queue never full.
template <class Logger>
void burst(benchmark::State& state) {
    Logger logger;
    while (state.KeepRunningBatch(kBurst)) {
        for (int i = 0; i < kBurst; ++i) logger.log();
        state.PauseTiming();
        logger.flush();
        state.ResumeTiming();
    }
}

/// Everything until the last line is written.
template <class Logger>
void sustained(benchmark::State& state) {
    Logger logger;
    while (state.KeepRunningBatch(kSustained)) {
        for (int i = 0; i < kSustained; ++i) logger.log();
        logger.flush();
    }
}

/// One line after the other, the consumer asleep each time.
template <class Logger>
void lone(benchmark::State& state) {
    Logger logger;
    for (auto _ : state) {
        logger.log();
        state.PauseTiming();
        ::usleep(2000);
        state.ResumeTiming();
    }
}

template <class Logger>
void fourThreads(benchmark::State& state) {
    static std::unique_ptr<Logger> logger;
    if (state.thread_index() == 0) logger = std::make_unique<Logger>();
    for (auto _ : state) logger->log();
    if (state.thread_index() == 0) logger.reset();
}

void disabledOurs(benchmark::State& state) {
    const testkit::LogCapture capture(7);
    std::size_t number = 0;
    for (auto _ : state) {
        ++number;
        ZQLogVerbose([&] { return std::to_string(number); });
        benchmark::ClobberMemory();
    }
}

void disabledPeer(benchmark::State& state) {
    auto logger = std::make_shared<spdlog::logger>("disabled");
    logger->set_level(spdlog::level::info);
    std::size_t number = 0;
    for (auto _ : state) {
        ++number;
        if (logger->should_log(spdlog::level::debug)) logger->debug(std::to_string(number));
        benchmark::ClobberMemory();
    }
}

BENCHMARK(burst<Ours>)->Name("log/async/ours")->UseRealTime();
BENCHMARK(burst<Peer>)->Name("log/async/spdlog")->UseRealTime();
BENCHMARK(sustained<Ours>)->Name("log/sustained/ours")->UseRealTime();
BENCHMARK(sustained<Peer>)->Name("log/sustained/spdlog")->UseRealTime();
BENCHMARK(fourThreads<Ours>)->Name("log/fourThreads/ours")->Threads(4)->Iterations(50'000)->UseRealTime();
BENCHMARK(fourThreads<Peer>)->Name("log/fourThreads/spdlog")->Threads(4)->Iterations(50'000)->UseRealTime();
BENCHMARK(lone<Ours>)->Name("log/lone/ours")->Iterations(200)->UseRealTime();
BENCHMARK(lone<Peer>)->Name("log/lone/spdlog")->Iterations(200)->UseRealTime();
BENCHMARK(disabledOurs)->Name("log/disabled/ours");
BENCHMARK(disabledPeer)->Name("log/disabled/spdlog");

}  // namespace
