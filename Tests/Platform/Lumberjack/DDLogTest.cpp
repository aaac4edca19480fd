#include "Platform/Lumberjack/DDLog.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <atomic>
#include <map>
#include <ranges>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Lumberjack/DDFileLogger.h"
#include "Platform/Lumberjack/DDLogFileManagerDefault.h"
#include "Platform/Lumberjack/DDLogPendingLines.h"
#include "TestKit/ChildProcess.h"
#include "TestKit/ManualClock.h"
#include "TestKit/ScratchFolder.h"
#include "Tests/Platform/Lumberjack/LogTestSupport.h"

namespace zqcore {
namespace {

using testing_support::contentOf;
using testing_support::MemoryLogger;
using testing_support::say;
using Lines = std::vector<std::string>;

/// A formatter made of a function.
class Formatter final : public DDLogFormatter {
  public:
    using Function = std::function<std::optional<std::string>(const DDLogMessage&)>;
    explicit Formatter(Function function) : function_(std::move(function)) {}
    std::optional<std::string> formatLogMessage(const DDLogMessage& message) override {
        return function_(message);
    }

  private:
    Function function_;
};

struct Log {
    std::shared_ptr<DDLog> ddlog = DDLog::make();
    std::shared_ptr<MemoryLogger> output = std::make_shared<MemoryLogger>();
    Log() { ddlog->addLogger(output); }
    void format(Formatter::Function function) const {
        output->setLogFormatter(std::make_shared<Formatter>(std::move(function)));
    }
};

/// The lines of all files, oldest first.
Lines linesIn(const std::string& directory) {
    auto infos = DDLogFileManagerDefault::make(directory, "App")->sortedLogFileInfos();
    Lines lines;
    for (const auto& info : std::ranges::reverse_view(infos)) {
        std::istringstream file(contentOf(info.path));
        for (std::string line; std::getline(file, line);) lines.push_back(line);
    }
    return lines;
}

TEST(DDLogTest, LosesAndReordersNothingWithFourThreads) {
    constexpr int kThreads = 4;
    constexpr int kLines = 5'000;
    const Log log;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < kLines; ++i) {
                // Every length from a bare number to more than a record holds, a synchronous call now and
                // then.
                std::string text = std::to_string(t) + ' ' + std::to_string(i) + ' ';
                text.append(static_cast<std::size_t>(i % 97 == 0 ? 5'000 : i % 50), 'x');
                say(*log.ddlog, text, i % 501 != 0);
            }
        });
    }
    for (auto& thread : threads) thread.join();
    DDLog::flushLog();
    std::map<int, int> next;
    for (const std::string& line : log.output->lines()) {
        const int t = line[0] - '0';
        const int i = std::stoi(line.substr(2));
        ASSERT_EQ(i, next[t]++) << "thread " << t;
        ASSERT_EQ(std::ranges::count(line, 'x'), i % 97 == 0 ? 5'000 : i % 50) << line.substr(0, 20);
    }
    for (int t = 0; t < kThreads; ++t) EXPECT_EQ(next[t], kLines);
}

TEST(DDLogTest, ASynchronousCallReturnsWithEveryEarlierLineOut) {
    const Log log;
    say(*log.ddlog, "first", true);
    say(*log.ddlog, "second", false);
    EXPECT_EQ(log.output->lines(), (Lines{"first", "second"})) << "nothing flushed by hand";
}

TEST(DDLogTest, CarriesTheTimeAndPlaceOfTheCall) {
    testkit::ManualClock clock;
    const Log log;
    DDLogMessage seen;
    std::string file;
    log.format([&](const DDLogMessage& message) {
        seen = message;
        file = message.fileName;
        return std::string(message.message);
    });
    log.ddlog->log(true, 7, DDLogFlagError, 3, "/x/a.b.swift", "run()", 42, &clock, std::string("text"));
    clock.advance(std::chrono::hours(1));
    DDLog::flushLog();
    EXPECT_EQ(file, "a.b");
    EXPECT_EQ(seen.function, "run()") << "it lives as long as the process";
    EXPECT_EQ(seen.line, 42U);
    EXPECT_EQ(seen.level, 7U);
    EXPECT_EQ(seen.flag, DDLogFlagError);
    EXPECT_EQ(seen.context, 3);
    EXPECT_EQ(seen.tag, &clock);
    EXPECT_EQ(seen.timestamp, testkit::ManualClock::kStart);
}

TEST(DDLogTest, CutsFileNamesAtTheirLastPoint) {
    for (const auto& [path, name] : std::map<std::string, std::string>{{"/x/Foo.swift", "Foo"},
                                                                       {"a.b.swift", "a.b"},
                                                                       {"Makefile", "Makefile"},
                                                                       {"/x.y/Makefile", "Makefile"},
                                                                       {"", ""}}) {
        EXPECT_EQ(logFileName(path), name) << path;
    }
}

TEST(DDLogTest, DropsWhatAFormatterRefusesAndKeepsItsOrderWithTheLines) {
    const Log log;
    say(*log.ddlog, "bare", true);
    log.format([](const DDLogMessage& message) -> std::optional<std::string> {
        if (message.message == "nothing") return {};
        if (message.message == "throws") throw std::runtime_error("no format");
        return "<" + std::string(message.message) + ">";
    });
    for (const char* text : {"one", "nothing", "throws", "two"}) say(*log.ddlog, text, true);
    log.output->setLogFormatter(nullptr);
    say(*log.ddlog, "bare again", true);
    DDLog::flushLog();
    EXPECT_EQ(log.output->lines(), (Lines{"bare", "<one>", "<two>", "bare again"}));
}

TEST(DDLogTest, TakesAnOutputOnceAndWritesNoLineOfFlagZero) {
    const Log log;
    log.ddlog->addLogger(log.output);
    log.ddlog->addLogger(nullptr);
    say(*log.ddlog, "once");
    say(*log.ddlog, "never", false, 0);
    EXPECT_EQ(log.output->lines(), Lines{"once"});
}

TEST(DDLogTest, OnTheLogQueueASynchronousCallGoesOutAtOnceAnAsynchronousOneLater) {
    const Log log;
    std::string label;
    log.format([&](const DDLogMessage& message) {
        if (message.message == "outer") {
            label = DispatchQueue::currentLabel();
            say(*log.ddlog, "later", true);
            say(*log.ddlog, "inside", false);
            DDLog::flushLog();
        }
        return std::string(message.message);
    });
    say(*log.ddlog, "outer", true);
    say(*log.ddlog, "end", false);
    DDLog::flushLog();
    const auto lines = log.output->lines();
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0], "inside");
    EXPECT_EQ(lines[1], "outer");
    EXPECT_EQ(label, "cocoa.lumberjack");
}

TEST(DDLogTest, ASynchronousLineToAnotherLoggerIsInItsFileWhenTheCallReturns) {
    const testkit::ScratchFolder directory;
    const auto other = DDLog::make();
    other->addLogger(DDFileLogger::make(DDLogFileManagerDefault::make(directory.path(), "App")));
    const Log log;
    Lines seen;
    log.format([&](const DDLogMessage& message) {
        say(*other, "from the formatter");
        seen = linesIn(directory.path());
        return std::string(message.message);
    });
    say(*log.ddlog, "outer", true);
    DDLog::flushLog();
    EXPECT_EQ(seen, Lines{"from the formatter"});
}

/// Logs from where a log may be expected least.
class LogsWhenFlushed final : public DDLogger {
  public:
    explicit LogsWhenFlushed(DDLog& to) : to_(to) {}
    void logMessage(const DDLogMessage&) override {}
    void flush() override {
        ++count;
        say(to_, "flushed");
    }
    int count = 0;

  private:
    DDLog& to_;
};

TEST(DDLogTest, AnOutputThatLogsWhenItIsFlushedIsNotFlushedForThat) {
    const Log log;
    const auto output = std::make_shared<LogsWhenFlushed>(*log.ddlog);
    log.ddlog->addLogger(output);
    say(*log.ddlog, "line");
    EXPECT_EQ(log.output->lines(), (Lines{"line", "flushed"}));
    const Log outer;
    outer.format([&](const DDLogMessage& message) {
        say(*log.ddlog, "inner");
        return std::string(message.message);
    });
    say(*outer.ddlog, "outer");
    EXPECT_EQ(log.output->lines(), (Lines{"line", "flushed", "inner", "flushed"}));
    EXPECT_EQ(output->count, 2);
}

TEST(DDLogTest, WritesTheLinesOfALoggerThatIsGone) {
    std::shared_ptr<MemoryLogger> output;
    {
        const Log log;
        output = log.output;
        for (int i = 0; i < 1000; ++i) say(*log.ddlog, "line", true);
    }
    DDLog::flushLog();
    EXPECT_EQ(output->lines().size(), 1000U);
    EXPECT_EQ(output.use_count(), 1) << "and then the logger lets go of its outputs";
}

TEST(DDLogTest, AForkedChildLogsAndExitsByItself) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "this sanitizer starts no thread in the child of a fork";
#endif
    const Log log;
    say(*log.ddlog, "parent", true);
    int result[2];
    ASSERT_EQ(::pipe(result), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::alarm(20);
        say(*log.ddlog, "child", true);
        say(*log.ddlog, "child", false);
        const auto lines = log.output->lines();
        const auto own = static_cast<char>(std::ranges::count(lines, "child"));
        (void)!::write(result[1], &own, 1);
        ::_exit(0);
    }
    ::close(result[1]);  // a child that dies is then the end of the pipe
    char own = 0;
    EXPECT_EQ(::read(result[0], &own, 1), 1);
    EXPECT_EQ(own, 2);
    int status = 0;
    ::waitpid(child, &status, 0);
    DDLog::flushLog();
    EXPECT_EQ(log.output->lines(), Lines{"parent"});
    ::close(result[0]);
}

std::string program() { return std::string(ZQ_TEST_PROGRAMS) + "/LogEnds"; }

TEST(DDLogTest, AnExitWritesOutAllThatWasLoggedAlsoByStaticDestructors) {
    for (const std::string_view way : {"return", "exit", "threads", "static"}) {
        const testkit::ScratchFolder directory;
        testkit::ChildProcess child({program(), std::string(way), directory.path()});
        ASSERT_EQ(child.wait(), 0) << way;
        const Lines lines = linesIn(directory.path());
        int next = 0;
        for (const std::string& line : lines) {
            if (line.starts_with("main ")) {
                ASSERT_EQ(line, "main " + std::to_string(next++)) << way;
            }
        }
        EXPECT_EQ(next, 5'000) << way;
        ASSERT_FALSE(lines.empty()) << way;
        if (way == "static") {
            EXPECT_EQ(lines.back(), "static destructor");
        }
    }
}

TEST(DDLogTest, LinesThatNobodyReadsDontEndTheProcess) {
    testkit::ChildProcess child({program(), "broken pipe"});
    EXPECT_EQ(child.readLine(), "alive");
    EXPECT_EQ(child.wait(), 0);
}

TEST(DDLogTest, ADyingProcessCanTellItsPendingLines) {
    testkit::ChildProcess child({program(), "crash"});
    EXPECT_EQ(child.readLine(), "4 pending");
    EXPECT_EQ(child.readLine(), "[2024-01-02 03:04:05.678Z ● Place ● 7 ● 4] stuck");
    EXPECT_EQ(child.readLine(), "[2024-01-02 03:04:05.678Z ● Place ● 7 ● 4] one");
    EXPECT_EQ(child.readLine(), "[2024-01-02 03:04:05.678Z ● Place ● 7 ● 1] two");
    EXPECT_EQ(child.readLine(), "[2024-01-02 03:04:05.678Z ● Place ● 7 ● 4] " + std::string(10'000, 'x'));
    EXPECT_EQ(child.readLine(), "newest 1");
    EXPECT_EQ(child.readLine(), "[2024-01-02 03:04:05.678Z ● Place ● 7 ● 4] " + std::string(10'000, 'x'));
    EXPECT_EQ(child.wait(), -SIGSEGV);
}

TEST(DDLogTest, AWalkThatWasLeftByAJumpDoesntHoldTheExit) {
    testkit::ChildProcess child({program(), "left walk"});
    EXPECT_EQ(child.readLine(), "one");
    EXPECT_EQ(child.readLine(), "two");
    EXPECT_EQ(child.wait(), 0);
}

TEST(DDLogTest, PendingLinesCanBeWalkedWhileOthersLog) {
    const Log log;
    std::atomic<bool> stop{false};
    std::thread writer([&] {
        // A synchronous line now and then, so that the backlog stays short.
        for (int i = 0; !stop; ++i) say(*log.ddlog, "text of a line", i % 64 != 0);
    });
    while (log.output->lines().empty()) std::this_thread::yield();
    std::size_t wrong = 0;
    for (int i = 0; i < 200; ++i) {
        DDLogPendingLines::walk(
            [](const DDLogPendingLines::Line& line, void* count) {
                if (line.message != "text of a line") ++*static_cast<std::size_t*>(count);
            },
            &wrong);
    }
    stop = true;
    writer.join();
    EXPECT_EQ(wrong, 0U);
    DDLog::flushLog();
    EXPECT_EQ(DDLogPendingLines::walk(nullptr, nullptr), 0U) << "nothing is pending behind a flush";
}

}  // namespace
}  // namespace zqcore
