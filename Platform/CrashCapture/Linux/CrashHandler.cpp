// The handler proper: who reports, how a report survives faults of its own, and how the crash goes on after.
// Everything that a signal may enter here uses system calls and static memory only.
#include "Platform/CrashCapture/Linux/CrashHandler.h"

#include <cxxabi.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csetjmp>
#include <cstddef>
#include <cstring>
#include <ctime>
#include <exception>
#include <forward_list>
#include <new>
#include <string_view>
#include <typeinfo>
#include <utility>

#include "Platform/CrashCapture/Linux/CrashFacts.h"
#include "Platform/CrashCapture/Linux/FrameCapture.h"
#include "Platform/CrashCapture/Linux/ThreadSnapshots.h"
#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/Linux/WorkerThread.h"

namespace zqcore::platform::crash {

namespace {

constexpr std::array kSignals{SIGSEGV, SIGABRT, SIGBUS, SIGILL, SIGFPE, SIGTRAP, SIGSYS};

std::atomic<const HandlerConfiguration*> configuration{nullptr};
std::array<struct sigaction, kSignals.size()> earlierActions{};
std::terminate_handler earlierTerminate = nullptr;

// The thread that reports, 0 before; the first to crash wins, the others wait for it.
std::atomic<int> reporter{0};
std::atomic<bool> reported{false};
int restarts = 0;

CrashFacts facts;
HandlerFault fault;
// Set while a section runs; a fault in it jumps here.
sigjmp_buf sectionEscape;
volatile sig_atomic_t inSection = 0;
std::size_t sectionIndex = 0;
std::size_t sectionDepth = 0;
const char* sectionName = nullptr;

int currentThread() noexcept { return static_cast<int>(syscall(SYS_gettid)); }

std::uint64_t faultAddress(const siginfo_t& info) noexcept {
    return info.si_code > 0 ? reinterpret_cast<std::uint64_t>(info.si_addr) : 0;
}

[[noreturn]] void escapeSection(int signal, const siginfo_t& info, const void* context) noexcept {
    inSection = 0;
    fault.signal = signal;
    fault.address = signal == SIGALRM ? 0 : faultAddress(info);
    fault.section = sectionName;
    fault.frameCount = captureFramesByPointer(*static_cast<const ucontext_t*>(context), fault.frames);
    siglongjmp(sectionEscape, 1);
}

// A section may hang as well as crash: on a lock that the crashed thread held, say.
void onTimeLimit(int signal, siginfo_t* info, void* context) noexcept {
    if (inSection && reporter.load() == currentThread()) escapeSection(signal, *info, context);
}

/// The alarm of the thread that made it. The kernel rings at that thread and at no other, and what has rung
/// is delivered before `stop` returns: no alarm comes late, into a later section or after the report, where
/// it would end the process in place of the signal that it dies of. Failure: where the user has no timer
/// left, sections run without a limit.
class TimeLimit final {
  public:
    explicit TimeLimit(std::chrono::milliseconds limit) noexcept : limit_(limit) {
        struct sigaction action {};
        action.sa_sigaction = onTimeLimit;
        action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
        sigaction(SIGALRM, &action, &earlierAction_);
        sigset_t alarm;
        sigemptyset(&alarm);
        sigaddset(&alarm, SIGALRM);
        pthread_sigmask(SIG_UNBLOCK, &alarm, &earlierMask_);
        sigevent event{};
        event.sigev_notify = SIGEV_THREAD_ID;
        event.sigev_signo = SIGALRM;
        event._sigev_un._tid = currentThread();
        // The C library's own function may allocate.
        exists_ = syscall(SYS_timer_create, CLOCK_MONOTONIC, &event, &timer_) == 0;
    }
    ~TimeLimit() {
        if (exists_) syscall(SYS_timer_delete, timer_);
        pthread_sigmask(SIG_SETMASK, &earlierMask_, nullptr);
        sigaction(SIGALRM, &earlierAction_, nullptr);
    }
    TimeLimit(const TimeLimit&) = delete;
    TimeLimit& operator=(const TimeLimit&) = delete;

    void start() const noexcept { set(limit_); }
    void stop() const noexcept { set({}); }

  private:
    void set(std::chrono::milliseconds limit) const noexcept {
        if (!exists_) return;
        itimerspec time{};
        time.it_value.tv_sec = static_cast<time_t>(limit.count() / 1000);
        time.it_value.tv_nsec = static_cast<long>(limit.count() % 1000 * 1'000'000);
        syscall(SYS_timer_settime, timer_, 0, &time, nullptr);
    }

    std::chrono::milliseconds limit_;
    struct sigaction earlierAction_ {};
    sigset_t earlierMask_{};
    // As the kernel numbers its timers.
    int timer_ = 0;
    bool exists_ = false;
};

// Runs the sections in order. One that faults costs its own content and nothing else.
void runSections(const TimeLimit& limit) noexcept {
    std::size_t count = 0;
    const ReportSection* sections = reportSections(count);
    for (sectionIndex = 0; sectionIndex < count; ++sectionIndex) {
        sectionDepth = reportDepth();
        sectionName = sections[sectionIndex].name;
        limit.start();
        if (sigsetjmp(sectionEscape, 1) == 0) {
            inSection = 1;
            sections[sectionIndex].write();
            inSection = 0;
            limit.stop();
        } else {
            limit.stop();
            abandonSection(sectionDepth, fault);
        }
    }
}

void writeReport() noexcept {
    const HandlerConfiguration* settings = configuration.load();
    if (!settings || beginReport(*settings, facts) < 0) return;
    const TimeLimit limit(settings->sectionTimeLimit);
    runSections(limit);
    endReport();
}

// Whether the calling thread is to report; false when another one has done so, for which this waits.
bool claimReport() noexcept {
    int owner = 0;
    if (reporter.compare_exchange_strong(owner, currentThread())) return true;
    // A crash of its own outside any section: in the text of an exception, say. Begin again, but only once.
    if (owner == currentThread()) return ++restarts == 1;
    constexpr int kPatience = 6000;
    for (int i = 0; i < kPatience && !reported.load(); ++i) {
        const timespec step{0, 10'000'000};
        nanosleep(&step, nullptr);
    }
    return false;
}

// Puts the earlier handlers back and sends the signal once more, with all that came with it. It is held until
// the handler returns, so that the earlier handler, a debugger or a core file meets the scene as it was.
void passOn(int signal, siginfo_t& info) noexcept {
    for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &earlierActions[i], nullptr);
    sigset_t held;
    sigemptyset(&held);
    sigaddset(&held, signal);
    pthread_sigmask(SIG_BLOCK, &held, nullptr);
    const pid_t process = getpid();
    const int thread = currentThread();
    if (syscall(SYS_rt_tgsigqueueinfo, process, thread, signal, &info) != 0) {
        syscall(SYS_tgkill, process, thread, signal);
    }
}

void onSignal(int signal, siginfo_t* info, void* context) noexcept {
    const int earlierError = errno;
    if (signal == kSnapshotSignal && answerSnapshotRequest(*info, context)) {
        errno = earlierError;
        return;
    }
    if (inSection && reporter.load() == currentThread()) escapeSection(signal, *info, context);
    if (!reported.load() && claimReport()) {
        facts.isException = false;
        facts.signal = signal;
        facts.info = *info;
        facts.context = static_cast<const ucontext_t*>(context);
        facts.skippedFrames = 0;
        facts.thread = currentThread();
        writeReport();
        reported.store(true);
    }
    passOn(signal, *info);
    errno = earlierError;
}

template <std::size_t Size>
void keep(std::array<char, Size>& into, std::string_view text) noexcept {
    const std::size_t length = text.size() < Size - 1 ? text.size() : Size - 1;
    std::memcpy(into.data(), text.data(), length);
    into[length] = '\0';
}

void keepReason(std::string_view text) noexcept {
    keep(facts.exceptionReason, text);
    facts.hasReason = true;
}

// What the exception says of itself, if it is of a kind that says anything.
void askReason() noexcept {
    try {
        std::rethrow_exception(std::current_exception());
    } catch (const std::exception& exception) {
        keepReason(exception.what());
    } catch (const std::string& text) {
        keepReason(text);
    } catch (const char* text) {
        if (text) keepReason(text);
    } catch (...) {  // its type is all that can be told
    }
}

[[noreturn]] void onTerminate() {
    const std::type_info* type = abi::__cxa_current_exception_type();
    // Without an exception this is a plain abort, which tells itself.
    if (type && !reported.load() && claimReport()) {
        keep(facts.exceptionName, type->name());
        askReason();
        facts.isException = true;
        facts.signal = SIGABRT;
        ucontext_t here;
        getcontext(&here);
        facts.context = &here;
        facts.skippedFrames = 1;
        facts.thread = currentThread();
        writeReport();
        reported.store(true);
    }
    if (earlierTerminate) earlierTerminate();
    std::abort();
}

void giveCallingThreadItsStack() {
    if (isMainThread()) {
        // To the very end of the process, the ends of statics included.
        alignas(AlternateSignalStack) static std::array<std::byte, sizeof(AlternateSignalStack)> place;
        static const auto* stack = new (place.data()) AlternateSignalStack;
        (void)stack;
    } else {
        thread_local const AlternateSignalStack stack;
    }
}

}  // namespace

void installHandlers(HandlerConfiguration settings) {
    // None is ever freed: a crash may be reading it.
    static auto& all = *new std::forward_list<HandlerConfiguration>;
    all.push_front(std::move(settings));
    const bool first = configuration.exchange(&all.front()) == nullptr;
    giveCallingThreadItsStack();
    if (!first) return;
    prepareFrameCapture();
    earlierTerminate = std::set_terminate(onTerminate);
    for (std::size_t i = 0; i < kSignals.size(); ++i) {
        struct sigaction action {};
        action.sa_sigaction = onSignal;
        // Not deferred, so that a fault of the handler comes back to it instead of ending the process.
        action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
        sigaction(kSignals[i], &action, &earlierActions[i]);
    }
}

}  // namespace zqcore::platform::crash
