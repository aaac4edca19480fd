// Real processes that die, and what the next reader finds of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/CrashCapture/KSCrashReportStore.h"
#include "Platform/CrashCapture/ReportFields.h"
#include "TestKit/ChildProcess.h"
#include "TestKit/Sanitized.h"
#include "TestKit/ScratchFolder.h"

namespace zqcore::platform {
namespace {

using crash::ReportFields;
using testkit::ChildProcess;
using testkit::kSanitized;
using testkit::ScratchFolder;

class CrashCapture : public testing::Test {
  protected:
    void SetUp() override {
        if (kSanitized)
            GTEST_SKIP() << "a sanitizer takes the fatal signals and the end of the process for itself";
    }

    // Lets a child die; its exit code, or the negative number of the signal.
    int die(const std::string& fault, const std::string& where = "main",
            std::vector<std::string> options = {}) {
        std::vector<std::string> arguments{ZQ_TEST_PROGRAMS "/CrashChild", fault, where,
                                           "path=" + folder_.path()};
        arguments.insert(arguments.end(), options.begin(), options.end());
        ChildProcess child(arguments);
        while (auto line = child.readLine()) lines_.push_back(*line);
        return child.wait();
    }

    // The one report that is there.
    Value::Dictionary report() {
        const std::vector<std::uint64_t> numbers = store_.readyReports();
        EXPECT_EQ(numbers.size(), 1U);
        return numbers.empty() ? Value::Dictionary()
                               : store_.read(numbers.front()).value_or(Value::Dictionary());
    }

    ScratchFolder folder_;
    KSCrashReportStore store_{folder_.path(), "CrashChild"};
    std::vector<std::string> lines_;
};

ReportFields crashedThread(const Value::Dictionary& report) {
    for (const Value& thread : ReportFields(&report).in("crash").list("threads")) {
        if (ReportFields(thread.asDictionary()).isTrue("crashed")) return ReportFields(thread.asDictionary());
    }
    ADD_FAILURE() << "no crashed thread";
    return ReportFields(nullptr);
}

// Whether a frame of the thread lies in that function.
bool passes(const ReportFields& thread, std::string_view function) {
    for (const Value& frame : thread.in("backtrace").list("contents")) {
        const std::string* name = ReportFields(frame.asDictionary()).text("symbol_name");
        if (name && name->find(function) != std::string::npos) return true;
    }
    return false;
}

std::string firstFrame(const ReportFields& thread) {
    const Value::Array& frames = thread.in("backtrace").list("contents");
    const std::string* name =
        frames.empty() ? nullptr : ReportFields(frames[0].asDictionary()).text("symbol_name");
    return name ? *name : "";
}

struct SignalCase {
    const char* fault;
    int signal;
    const char* name;
    const char* exception;
    const char* code;
    const char* function;
};
void PrintTo(const SignalCase& one, std::ostream* out) { *out << one.fault; }
constexpr SignalCase kSignalCases[] = {
    {"segv", SIGSEGV, "SIGSEGV", "EXC_BAD_ACCESS", "SEGV_MAPERR", "childfaults::writeNowhere"},
    {"abort", SIGABRT, "SIGABRT", "EXC_CRASH", "SI_TKILL", "childfaults::abortHere"},
    {"bus", SIGBUS, "SIGBUS", "EXC_BAD_ACCESS", "BUS_ADRERR", "childfaults::readPastFile"},
    {"ill", SIGILL, "SIGILL", "EXC_BAD_INSTRUCTION", "ILL_ILLOPN", "childfaults::illegal"},
    {"fpe", SIGFPE, "SIGFPE", "EXC_ARITHMETIC", "FPE_INTDIV", "childfaults::divide"},
    {"trap", SIGTRAP, "SIGTRAP", "EXC_BREAKPOINT", "SI_KERNEL", "childfaults::trap"},
};

class CrashSignal : public CrashCapture, public testing::WithParamInterface<SignalCase> {};

TEST_P(CrashSignal, IsReportedOnEveryKindOfThreadAndThenEndsTheProcess) {
    for (const std::string where : {"main", "thread", "queue"}) {
        SCOPED_TRACE(where);
        EXPECT_EQ(die(GetParam().fault, where), -GetParam().signal)
            << "the process must still die of its signal";
        const Value::Dictionary found = report();
        const ReportFields error = ReportFields(&found).in("crash").in("error");
        EXPECT_EQ(error.shown("type"), "signal");
        EXPECT_EQ(error.in("signal").shown("name"), GetParam().name);
        EXPECT_EQ(error.in("signal").shown("code_name"), GetParam().code);
        EXPECT_EQ(error.in("mach").shown("exception_name"), GetParam().exception);
        EXPECT_TRUE(passes(crashedThread(found), GetParam().function)) << Value(found).description();
        EXPECT_EQ(found.find("recrash_report"), nullptr);
        EXPECT_EQ(found.find("incomplete"), nullptr);
        store_.remove(store_.readyReports().front());
    }
}

INSTANTIATE_TEST_SUITE_P(All, CrashSignal, testing::ValuesIn(kSignalCases),
                         [](const auto& one) { return std::string(one.param.fault); });

TEST_F(CrashCapture, TellsWhereAndWhatTheProcessWas) {
    EXPECT_EQ(die("segv", "queue"), -SIGSEGV);
    const Value::Dictionary found = report();
    const ReportFields fields(&found);
    EXPECT_EQ(fields.in("crash").in("error").number("address"), 0x10U);
    EXPECT_EQ(fields.in("crash").in("error").in("mach").shown("code_name"), "KERN_INVALID_ADDRESS");
    EXPECT_EQ(fields.in("system").shown("process_name"), "CrashChild");
    EXPECT_EQ(fields.in("report").shown("process_name"), "CrashChild");
    EXPECT_EQ(fields.in("report").shown("type"), "standard");
    EXPECT_EQ(fields.in("report").shown("timestamp").size(),
              std::string("2021-03-04T05:06:07.123456Z").size());
    const ReportFields thread = crashedThread(found);
    EXPECT_EQ(firstFrame(thread), "childfaults::writeNowhere()") << "no frame of the handler, none missing";
    EXPECT_EQ(thread.shown("dispatch_queue"), "com.example.faulty");
    EXPECT_EQ(thread.text("name"), nullptr) << "the queue's label tells more than the worker's name";
    EXPECT_GE(thread.in("registers").in("basic").dictionary()->size(), 21U);
    EXPECT_GE(fields.in("crash").list("threads").size(), 2U);
    bool hasItself = false;
    for (const Value& image : fields.list("binary_images")) {
        const ReportFields entry(image.asDictionary());
        if (entry.shown("name") != ZQ_TEST_PROGRAMS "/CrashChild") continue;
        hasItself = true;
        EXPECT_EQ(entry.shown("uuid").size(), 32U);
        EXPECT_GT(entry.number("image_size"), 4096U);
    }
    EXPECT_TRUE(hasItself);
}

TEST_F(CrashCapture, AnExecutableWhoseNameIsNoTextCostsNoFact) {
    const std::string name = "caf\xE9";
    std::filesystem::copy_file(ZQ_TEST_PROGRAMS "/CrashChild", folder_ / name);
    ChildProcess child({folder_ / name, "segv", "main", "path=" + folder_.path()});
    EXPECT_EQ(child.wait(), -SIGSEGV);
    const KSCrashReportStore store(folder_.path(), name);
    ASSERT_EQ(store.readyReports().size(), 1U);
    const Value::Dictionary found = store.read(store.readyReports().front()).value_or(Value::Dictionary());
    const ReportFields fields(&found);
    EXPECT_EQ(fields.in("report").shown("version"), "3.3.0");
    EXPECT_EQ(fields.in("report").shown("id").size(), 36U);
    EXPECT_EQ(fields.in("report").shown("process_name"), "caf\uFFFD");
    EXPECT_EQ(fields.in("system").shown("CFBundleExecutable"), "caf\uFFFD");
    EXPECT_NE(fields.in("system").text("os_version"), nullptr);
}

TEST_F(CrashCapture, ReportsStackOverflowsOnTheMainThreadAndOnQueues) {
    for (const std::string where : {"main", "queue"}) {
        SCOPED_TRACE(where);
        EXPECT_EQ(die("overflow", where), -SIGSEGV);
        const Value::Dictionary found = report();
        EXPECT_EQ(ReportFields(&found).in("crash").in("error").shown("reason"), "Stack overflow");
        EXPECT_EQ(crashedThread(found).in("backtrace").list("contents").size(), 128U);
        EXPECT_TRUE(passes(crashedThread(found), "childfaults::overflow"));
        store_.remove(store_.readyReports().front());
    }
}

TEST_F(CrashCapture, TellsTypeAndTextOfAnUncaughtException) {
    struct Case {
        const char* fault;
        const char* where;
        const char* type;
        const char* reason;
        const char* function;
    };
    constexpr Case kCases[] = {
        {"throw", "main", "childfaults::OddError", "no such thing: \"quoted\"\n第二行",
         "childfaults::throwError"},
        {"throw", "queue", "childfaults::OddError", "no such thing: \"quoted\"\n第二行",
         "childfaults::throwError"},
        {"throw-text", "thread", "char const*", "plain text", "childfaults::throwText"},
        {"throw-int", "main", "int", "(null)", "childfaults::throwInt"},
    };
    for (const auto& [fault, where, type, reason, function] : kCases) {
        SCOPED_TRACE(std::string(fault) + " on " + where);
        EXPECT_EQ(die(fault, where), -SIGABRT);
        const Value::Dictionary found = report();
        const ReportFields error = ReportFields(&found).in("crash").in("error");
        EXPECT_EQ(error.shown("type"), "cpp_exception");
        EXPECT_EQ(error.in("cpp_exception").shown("name"), type);
        EXPECT_EQ(error.shown("reason"), reason);
        EXPECT_EQ(error.in("signal").shown("name"), "SIGABRT");
        EXPECT_TRUE(passes(crashedThread(found), function)) << "the throw is still on the stack";
        EXPECT_EQ(store_.readyReports().size(), 1U) << "the abort that follows is the same crash";
        store_.remove(store_.readyReports().front());
    }
}

TEST_F(CrashCapture, NamesTheCallerOfACallToNowhere) {
    EXPECT_EQ(die("null-call"), -SIGSEGV);
    const Value::Dictionary found = report();
    EXPECT_TRUE(passes(crashedThread(found), "childfaults::callNull"));
}

TEST_P(CrashSignal, CallsTheEarlierHandlerAfterTheReport) {
    EXPECT_EQ(die(GetParam().fault, "main", {"earlier"}), 42);
    ASSERT_FALSE(lines_.empty());
    EXPECT_TRUE(lines_.back().starts_with("earlier " + std::to_string(GetParam().signal) + " code "));
    if (GetParam().signal == SIGSEGV) {
        EXPECT_EQ(lines_.back(), "earlier 11 code 1 address 0x10") << "with all that the first signal told";
    }
    const Value::Dictionary found = report();
    EXPECT_EQ(ReportFields(&found).in("crash").in("error").in("signal").shown("name"), GetParam().name);
}

TEST_F(CrashCapture, CallsTheEarlierTerminateHandlerAfterTheReport) {
    EXPECT_EQ(die("throw", "queue", {"earlier"}), 43);
    EXPECT_EQ(lines_.back(), "earlier terminate");
    const Value::Dictionary found = report();
    EXPECT_EQ(ReportFields(&found).in("crash").in("error").shown("type"), "cpp_exception");
}

TEST_F(CrashCapture, ReportsAnExceptionThatCrashesWhenItIsAsked) {
    EXPECT_EQ(die("throw-bad"), -SIGSEGV);
    const Value::Dictionary found = report();
    EXPECT_EQ(ReportFields(&found).in("crash").in("error").in("signal").shown("name"), "SIGSEGV");
    EXPECT_TRUE(passes(crashedThread(found), "childfaults::throwBad"));
    EXPECT_EQ(found.find("incomplete"), nullptr);
}

TEST_F(CrashCapture, ThreadsThatDieTogetherLeaveOneWholeReport) {
    EXPECT_EQ(die("together"), -SIGSEGV);
    const Value::Dictionary found = report();
    EXPECT_TRUE(passes(crashedThread(found), "childfaults::writeNowhere"));
    EXPECT_EQ(found.find("incomplete"), nullptr);
    EXPECT_EQ(found.find("recrash_report"), nullptr);
}

TEST_F(CrashCapture, KeepsTheNewestFiveOfManyCrashes) {
    std::vector<std::uint64_t> all;
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(die("segv"), -SIGSEGV);
        all.push_back(store_.readyReports().back());
    }
    EXPECT_TRUE(std::ranges::is_sorted(all));
    EXPECT_EQ(die("none"), 0) << "the next start clears up";
    EXPECT_EQ(store_.readyReports(), std::vector<std::uint64_t>(all.end() - 5, all.end()));
}

TEST_F(CrashCapture, SurvivesACrashAndAHangOfItsOwn) {
    struct Case {
        std::vector<std::string> options;
        const char* signal;
    };
    for (const auto& [options, signal] :
         {Case{{"bad-log"}, "SIGSEGV"}, Case{{"hung-log", "impatient"}, "(null)"}}) {
        SCOPED_TRACE(options.front());
        // A fault of the same kind as the first: the one that a signal handler doesn't meet by itself.
        EXPECT_EQ(die("segv", "queue", options), -SIGSEGV);
        const Value::Dictionary found = report();
        const ReportFields fields(&found);
        EXPECT_EQ(found.find("incomplete"), nullptr);
        EXPECT_TRUE(passes(crashedThread(found), "childfaults::writeNowhere"));
        const ReportFields fault = fields.in("recrash_report").in("crash").in("error");
        EXPECT_EQ(fault.in("signal").shown("name"), signal);
        EXPECT_EQ(fault.shown("reason"), "pending log");
        store_.remove(store_.readyReports().front());
    }
}

TEST_F(CrashCapture, GivesWhatThereIsOfAReportWhoseWriterWasKilledButNoSooner) {
    ChildProcess child(
        {ZQ_TEST_PROGRAMS "/CrashChild", "segv", "main", "hung-log", "path=" + folder_.path()});
    while (child.readLine().value_or("hanging") != "hanging") {
    }
    EXPECT_TRUE(store_.readyReports().empty()) << "it is still being written";
    child.kill();
    const Value::Dictionary found = report();
    EXPECT_TRUE(ReportFields(&found).isTrue("incomplete"));
    EXPECT_TRUE(passes(crashedThread(found), "childfaults::writeNowhere"));
}

TEST_F(CrashCapture, KeepsTheLinesThatTheLogStillHeld) {
    EXPECT_EQ(die("segv", "main", {"log=last words\nand more"}), -SIGSEGV);
    const Value::Dictionary found = report();
    EXPECT_EQ(ReportFields(&found).in("user").shown("pending_log"), "last words\nand more");
    store_.remove(store_.readyReports().front());
    EXPECT_TRUE(std::filesystem::is_empty(folder_ / "Reports")) << "the lines go with their report";
}

TEST_F(CrashCapture, ShowsWhatTheOtherThreadsWereAt) {
    EXPECT_EQ(die("segv", "main", {"busy"}), -SIGSEGV);
    const Value::Dictionary found = report();
    int standing = 0;
    for (const Value& thread : ReportFields(&found).in("crash").list("threads")) {
        const ReportFields fields(thread.asDictionary());
        if (!fields.isTrue("crashed") && passes(fields, "childfaults::standAbout")) ++standing;
    }
    EXPECT_EQ(standing, 3);
}

TEST_F(CrashCapture, LeavesNothingBehindWithoutACrash) {
    EXPECT_EQ(die("none"), 0);
    EXPECT_TRUE(store_.readyReports().empty());
}

}  // namespace
}  // namespace zqcore::platform
