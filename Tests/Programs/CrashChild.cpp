// A process that installs crash capture and then dies in the way it is told. Prints what it does, one line
// each. Usage: CrashChild FAULT [WHERE] [OPTION...]
//   FAULT: segv abort bus ill fpe trap overflow throw throw-text throw-int throw-bad null-call kill-segv
//          together none
//   WHERE: main (default), thread, queue
//   OPTION: earlier (handlers installed before ours), said=N (N lines go to the log just before the death),
//           stalled (its outputs take no line from then on), bad-log (the pending log writer crashes),
//           hung-log (it never returns), impatient (half a second a section), log=TEXT (it writes that), busy
//           (other threads stand about), time (prints how long the handler took for a segv), path=DIR (the
//           capture alone, into that directory, without the library)
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <atomic>
#include <barrier>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "Classes/Crash/ZQCrash.h"
#include "Classes/Log/Log/ZQLog.h"
#include "Classes/Log/Log/ZQManagerForLog.h"
#include "Platform/CrashCapture/KSCrash.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Lumberjack/DDLog.h"
#include "Platform/Lumberjack/DDLogger.h"
#include "Platform/Lumberjack/DDOSLogger.h"

// The sanitizers leave the fatal signals to the handlers under test. A process that dies of them leaks.
#define ZQ_HANDS_OFF                                                                                 \
    "handle_segv=0:handle_abort=0:handle_sigbus=0:handle_sigill=0:handle_sigfpe=0:handle_sigtrap=0:" \
    "detect_leaks=0"
extern "C" ZQ_EXPORT const char* __asan_default_options() { return ZQ_HANDS_OFF; }
extern "C" ZQ_EXPORT const char* __tsan_default_options() { return ZQ_HANDS_OFF; }

namespace childfaults {

// Named so that a report's symbols can be looked for; none may be folded away, and no sanitizer may speak up
// before the fault.
#if defined(__clang__)
#define ZQ_KEEP __attribute__((noinline, used, no_sanitize("address", "thread", "undefined")))
#else
#define ZQ_KEEP __attribute__((noinline, noclone, used, no_sanitize("address,thread,undefined")))
#endif

class OddError final : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

volatile int sink = 0;
// As the compiler can't know: it would warn, or do something of its own.
volatile std::uintptr_t lowAddress = 0x10;
volatile int endlessly = 1;

ZQ_KEEP void writeNowhere() {
    *reinterpret_cast<volatile int*>(lowAddress) = 1;
    sink = 1;
}
ZQ_KEEP void abortHere() { std::abort(); }
ZQ_KEEP void readPastFile() {
    std::FILE* file = std::tmpfile();
    const long page = sysconf(_SC_PAGESIZE);
    void* mapped = mmap(nullptr, static_cast<std::size_t>(page), PROT_READ, MAP_SHARED, fileno(file), 0);
    sink = *static_cast<volatile char*>(mapped);
}
ZQ_KEEP void illegal() {
#if defined(__x86_64__)
    asm volatile("ud2");
#else
    asm volatile("udf #0");
#endif
    sink = 1;
}
ZQ_KEEP void divide() {
#if defined(__x86_64__)
    // By hand: the compiler may see the fault coming and put a trap in its place.
    asm volatile("xorl %%edx, %%edx; movl $1, %%eax; xorl %%ecx, %%ecx; idivl %%ecx" ::: "eax", "ecx", "edx");
#else
    std::raise(SIGFPE);
#endif
    sink = 1;
}
ZQ_KEEP void trap() {
#if defined(__x86_64__)
    asm volatile("int3");
#else
    asm volatile("brk #0");
#endif
    sink = 1;
}
ZQ_KEEP int overflow(int depth) {
    volatile char frame[512];
    frame[0] = static_cast<char>(depth);
    sink = frame[0];
    return endlessly != 0 ? overflow(depth + 1) + frame[0] : 0;
}
ZQ_KEEP void throwError() { throw OddError("no such thing: \"quoted\"\n第二行"); }
struct BadError final : std::exception {
    [[nodiscard]] const char* what() const noexcept override {
        writeNowhere();
        return "";
    }
};
ZQ_KEEP void throwBad() { throw BadError(); }
// Threads that all die at the same moment.
[[noreturn]] ZQ_KEEP void dieTogether() {
    static std::barrier together(4);
    for (int i = 0; i < 4; ++i) {
        std::thread([] {
            together.arrive_and_wait();
            writeNowhere();
        }).detach();
    }
    for (;;) pause();
}
ZQ_KEEP void throwText() { throw "plain text"; }
ZQ_KEEP void throwInt() { throw 7; }
std::atomic<int> standing{0};

ZQ_KEEP void standAbout() {
    ++standing;
    standing.notify_one();
    for (;;) pause();
}
ZQ_KEEP void callNull() {
    void (*volatile nowhere)() = nullptr;
    nowhere();
    sink = 1;
}

}  // namespace childfaults

namespace {

std::string pendingText;

void writeText(int fd) { (void)!write(fd, pendingText.data(), pendingText.size()); }
void writeBadly(int) { *reinterpret_cast<volatile int*>(childfaults::lowAddress) = 1; }
void writeNever(int) {
    constexpr char kLine[] = "hanging\n";
    (void)!write(STDOUT_FILENO, kLine, sizeof kLine - 1);
    for (;;) pause();
}

std::chrono::steady_clock::time_point began;

void timingHandler(int) {
    const auto took = std::chrono::steady_clock::now() - began;
    std::printf("took %lld us\n",
                static_cast<long long>(std::chrono::duration_cast<std::chrono::microseconds>(took).count()));
    std::fflush(stdout);
    _exit(0);
}

void earlierHandler(int signal, siginfo_t* info, void*) {
    char line[128];
    const int length = std::snprintf(line, sizeof line, "earlier %d code %d address %p\n", signal,
                                     info->si_code, info->si_code > 0 ? info->si_addr : nullptr);
    (void)!write(STDOUT_FILENO, line, static_cast<std::size_t>(length));
    _exit(42);
}

/// Takes a line and never gives control back.
class StalledOutput final : public zqcore::platform::DDLogger {
  public:
    void logMessage(const zqcore::platform::DDLogMessage&) override {
        for (;;) pause();
    }
};

[[noreturn]] void earlierTerminate() {
    constexpr char kLine[] = "earlier terminate\n";
    (void)!write(STDOUT_FILENO, kLine, sizeof kLine - 1);
    _exit(43);
}

void installEarlier() {
    std::set_terminate(earlierTerminate);
    struct sigaction action {};
    action.sa_sigaction = earlierHandler;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    for (const int signal : {SIGSEGV, SIGABRT, SIGBUS, SIGILL, SIGFPE, SIGTRAP})
        sigaction(signal, &action, nullptr);
}

const std::map<std::string, std::function<void()>> kFaults{
    {"segv", childfaults::writeNowhere},
    {"abort", childfaults::abortHere},
    {"bus", childfaults::readPastFile},
    {"ill", childfaults::illegal},
    {"fpe", childfaults::divide},
    {"trap", childfaults::trap},
    {"overflow", [] { (void)childfaults::overflow(0); }},
    {"throw", childfaults::throwError},
    {"throw-text", childfaults::throwText},
    {"throw-int", childfaults::throwInt},
    {"throw-bad", childfaults::throwBad},
    {"together", childfaults::dieTogether},
    {"null-call", childfaults::callNull},
    {"kill-segv",
     [] {
         ::kill(getpid(), SIGSEGV);
         pause();
     }},
    {"none", [] {}},
};

void stand() {
    for (;;) pause();
}

}  // namespace

int main(int argc, char** argv) {
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    const std::string fault = argc > 1 ? argv[1] : "none";
    const std::string where = argc > 2 ? argv[2] : "main";
    std::string path;
    bool busy = false;
    bool stalled = false;
    int said = 0;
    zqcore::platform::KSCrashConfiguration configuration;
    configuration.setDeleteBehaviorAfterSendAll(zqcore::platform::KSCrashDeleteBehavior::never);
    for (int i = 3; i < argc; ++i) {
        const std::string option = argv[i];
        if (option == "earlier") installEarlier();
        if (option == "time") std::signal(SIGSEGV, timingHandler);
        if (option == "bad-log") configuration.setPendingLogWriter(writeBadly);
        if (option == "busy") busy = true;
        if (option == "stalled") stalled = true;
        if (option.starts_with("said=")) said = std::stoi(option.substr(5));
        if (option == "hung-log") configuration.setPendingLogWriter(writeNever);
        if (option == "impatient") configuration.setSectionTimeLimit(std::chrono::milliseconds(500));
        if (option.starts_with("log=")) {
            pendingText = option.substr(4);
            configuration.setPendingLogWriter(writeText);
        }
        if (option.starts_with("path=")) path = option.substr(5);
    }
    if (path.empty()) {
        zqcore::ZQCrash::install();
        for (const auto& report : zqcore::ZQCrash::exportedReports())
            std::printf("exported %s\n", report.path.c_str());
    } else {
        configuration.setInstallPath(path);
        const auto installed =
            zqcore::platform::KSCrash::sharedInstance().installWithConfiguration(configuration);
        if (!installed) std::printf("failed %s\n", installed.error().description().c_str());
    }
    std::printf("ready\n");
    std::fflush(stdout);
    if (busy) {
        for (int i = 0; i < 3; ++i) std::thread(childfaults::standAbout).detach();
        for (int seen = 0; seen < 3; seen = childfaults::standing) childfaults::standing.wait(seen);
    }
    const auto& body = [&, die = kFaults.at(fault)] {
        if (stalled) {
            zqcore::ZQManagerForLog::sharedDDLog()->flushLog();
            zqcore::ZQManagerForLog::sharedDDLog()->addLogger(std::make_shared<StalledOutput>());
        }
        // Hundreds of lines on standard error help nobody.
        if (said > 0) zqcore::platform::DDOSLogger::sharedInstance()->setFallback(-1);
        for (int i = 0; i < said; ++i) zqcore::ZQLogInfo([i] { return "said " + std::to_string(i); });
        die();
    };
    began = std::chrono::steady_clock::now();
    if (where == "main") body();
    if (where == "thread") std::thread([&body] { body(); }).join();
    if (where == "queue") {
        const auto queue = zqcore::platform::DispatchQueue::serial("com.example.faulty");
        queue->async([&body] { body(); });
        stand();
    }
    return 0;
}
