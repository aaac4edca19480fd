// Logs, then ends in the way that its first argument names; a test looks at what reached the disk.
#include <setjmp.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>

#include "Platform/Base/NSLog.h"
#include "Platform/Lumberjack/DDFileLogger.h"
#include "Platform/Lumberjack/DDLog.h"
#include "Platform/Lumberjack/DDLogFileManagerDefault.h"
#include "Platform/Lumberjack/DDLogPendingLines.h"
#include "Platform/Lumberjack/DDOSLogger.h"
#include "TestKit/ManualClock.h"

using namespace zqcore;

namespace {

void say(DDLog& ddlog, std::string_view text, std::uint64_t flag = DDLogFlagInfo) {
    ddlog.log(true, DDLogLevelAll, flag, 0, "/x/Place.cpp", "function()", 7, nullptr, text);
}

struct LogsWhenDestroyed {
    DDLog* ddlog = nullptr;
    ~LogsWhenDestroyed() {
        if (ddlog) say(*ddlog, "static destructor");
    }
} logsWhenDestroyed;  // made before the log is used, so ended after all that the log might have registered

std::atomic<bool> stuck{false};

/// Holds the log queue for ever, so that lines stay pending.
class HangingLogger final : public DDLogger {
  public:
    void logMessage(const DDLogMessage&) override {
        stuck = true;
        for (;;) ::pause();
    }
};

void reportPending(int signal) {
    std::string_view text = "4 pending\n";
    if (DDLogPendingLines::walk(nullptr, nullptr) != 4) text = "another number pending\n";
    (void)!::write(STDOUT_FILENO, text.data(), text.size());
    DDLogPendingLines::writeTo(STDOUT_FILENO);
    (void)!::write(STDOUT_FILENO, "newest 1\n", 9);
    DDLogPendingLines::writeTo(STDOUT_FILENO, 1);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

int crash() {
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    std::signal(SIGSEGV, reportPending);
    const testkit::ManualClock clock(testkit::ManualClock::kStart + std::chrono::milliseconds(678));
    auto ddlog = DDLog::make();
    ddlog->addLogger(std::make_shared<HangingLogger>());
    say(*ddlog, "stuck");
    while (!stuck) std::this_thread::yield();
    say(*ddlog, "one");
    say(*ddlog, "two", DDLogFlagError);
    say(*ddlog, std::string(10'000, 'x'));
    std::raise(SIGSEGV);
    return 1;
}

/// Takes lines when it is let, and prints them.
class PatientLogger final : public DDLogger {
  public:
    void logMessage(const DDLogMessage& message) override {
        stuck = true;
        stuck.notify_one();
        released.wait(false);
        std::printf("%.*s\n", static_cast<int>(message.message.size()), message.message.data());
    }
    static inline std::atomic<bool> released{false};
};

sigjmp_buf wayOut;

/// A walk over the pending lines that faults, as it may in a crash handler; and then an exit.
[[noreturn]] void leaveWalk() {
    ::alarm(20);
    auto ddlog = DDLog::make();
    ddlog->addLogger(std::make_shared<PatientLogger>());
    say(*ddlog, "one");
    stuck.wait(false);
    say(*ddlog, "two");
    if (sigsetjmp(wayOut, 1) == 0)
        DDLogPendingLines::walk([](const DDLogPendingLines::Line&, void*) { siglongjmp(wayOut, 1); },
                                nullptr);
    PatientLogger::released = true;
    PatientLogger::released.notify_one();
    std::exit(0);
}

/// Lines for a standard error that nobody reads any more, each by a road that writes on this thread.
int logToBrokenPipe() {
    int ends[2];
    if (::pipe(ends) != 0) return 2;
    ::dup2(ends[1], STDERR_FILENO);
    ::close(ends[1]);
    ::close(ends[0]);
    std::signal(SIGPIPE, SIG_DFL);  // whoever started this may ignore it
    auto ddlog = DDLog::make();
    ddlog->addLogger(DDOSLogger::make("/no/such/socket"));
    ddlog->log(false, DDLogLevelAll, DDLogFlagError, 0, "/x/Place.cpp", "function()", 7, nullptr,
               std::string_view("lost"));
    say(*ddlog, "lost");
    DDLog::flushLog();
    NSLog("lost");
    sigset_t pending;
    ::sigpending(&pending);
    std::puts(::sigismember(&pending, SIGPIPE) == 0 ? "alive" : "a signal is left behind");
    return 0;
}

}  // namespace

int main(int count, char** arguments) {
    const std::string_view way = arguments[1];
    if (way == "crash") return crash();
    if (way == "left walk") leaveWalk();
    if (way == "broken pipe") return logToBrokenPipe();
    if (count < 3) return 2;
    // Never ended: threads go on logging while the process goes.
    static const auto& ddlog = *new std::shared_ptr<DDLog>(DDLog::make());
    auto manager = DDLogFileManagerDefault::make(arguments[2], "App");
    manager->setMaximumNumberOfLogFiles(0);
    manager->setLogFilesDiskQuota(0);
    ddlog->addLogger(DDFileLogger::make(std::move(manager)));
    if (way == "threads") {
        for (int t = 0; t < 2; ++t) {
            std::thread([] {
                for (;;) say(*ddlog, "other");
            }).detach();
        }
    }
    for (int i = 0; i < 5'000; ++i) say(*ddlog, "main " + std::to_string(i));
    if (way == "static") logsWhenDestroyed.ddlog = ddlog.get();
    if (way == "exit") std::exit(0);
    return 0;
}
