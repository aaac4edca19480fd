#include "Platform/Lumberjack/Linux/LogQueue.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "Platform/Base/Clock.h"
#include "Platform/Dispatch/Linux/CurrentQueue.h"
#include "Platform/Dispatch/Linux/WorkerPool.h"
#include "Platform/Dispatch/Linux/WorkerThread.h"
#include "Platform/Lumberjack/DDLogger.h"

namespace zqcore::platform {

namespace {

// Lines between two looks at who else wants the role; their outputs are flushed together.
constexpr std::size_t kBatch = 512;
// The idle thread looks once more after this time before it sleeps, so that a stream of lines doesn't pay
// for a wake-up each.
constexpr timespec kLinger{0, 200'000};

// How long a walk over the pending lines waits for the queue to halt.
constexpr std::int64_t kPatience = 100'000'000;

// How long the queue stays halted for one walk. A crash handler leaves a walk that faults or hangs by a jump,
// so its end may never be told; and the exit that follows must not wait for it.
constexpr std::int64_t kLongestWalk = 4'000'000'000;

// The machine's own clock: a signal handler can't ask for the current one, and waits for real.
std::int64_t monotonicNanoseconds() noexcept {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

int threadNumber() noexcept { return static_cast<int>(::syscall(SYS_gettid)); }

constexpr std::uint32_t aligned(std::size_t size) { return static_cast<std::uint32_t>((size + 7) & ~7UL); }

// Runs what `async` has counted as a foreign run.
void runCounted(std::unique_ptr<DispatchBlock> work) {
    WorkerPool::holdForeignRun(1);
    (*work)();
    work.reset();
    WorkerPool::holdForeignRun(-1);
    WorkerPool::shared().endForeignRun();
}

// For those who must not make the queue: null until it is first used.
std::atomic<LogQueue*> used{nullptr};

// Runs twice at exit: before the end of those statics that are older than the queue, and last of all, so that
// what static destructors and other threads logged in between is written too.
[[gnu::destructor]] void flushAtExit() {
    LogQueue* const queue = used.load();
    if (!queue) return;
    queue->sync([] {});
    // What the last lines set going behind themselves: a clean-up, a line that an output logged.
    queue->sync([] {});
}

}  // namespace

std::string_view logFileName(std::string_view path) noexcept {
    if (const auto slash = path.rfind('/'); slash != std::string_view::npos) path.remove_prefix(slash + 1);
    return path.substr(0, path.rfind('.'));
}

LogQueue& LogQueue::shared() {
    static LogQueue& queue = [] -> LogQueue& {
        static const auto& kept = *new std::shared_ptr<LogQueue>(new LogQueue, [](LogQueue*) {});
        used.store(kept.get());
        std::atexit(flushAtExit);
        return *kept;
    }();
    return queue;
}

bool LogQueue::isCurrent() noexcept {
    return CurrentQueueScope::current() && CurrentQueueScope::current() == used.load();
}

LogQueue::LogQueue() {
    // The outputs must be at rest in the child, and its copy of the thread doesn't exist.
    ::pthread_atfork([] { shared().beforeFork(); }, [] { shared().afterForkInParent(); },
                     [] { shared().afterForkInChild(); });
}

void LogQueue::log(bool asynchronous, LogOutputs* outputs, const LogCall& call, std::string_view text,
                   std::string* owned) {
    const Date time = Clock::current().wallNow();
    if (!asynchronous && isCurrent()) return deliverInside(*outputs, call, text, time);
    const std::size_t size = sizeof(LogRecord) + text.size();
    LogRecord* record;
    std::uint32_t reserved;
    if (size <= LogRecords::kLongest) [[likely]] {
        reserved = aligned(size);
        record = fill(reserved, outputs, call);
        record->kind = LogRecord::Kind::line;
        record->textSize = static_cast<std::uint32_t>(text.size());
        std::memcpy(record->text(), text.data(), text.size());
    } else {
        auto body =
            owned ? std::make_unique<std::string>(std::move(*owned)) : std::make_unique<std::string>(text);
        reserved = sizeof(LogRecord);
        record = fill(reserved, outputs, call);
        record->kind = LogRecord::Kind::longLine;
        record->body = body.release();
    }
    record->timestamp = time.time_since_epoch().count();
    if (asynchronous) {
        LogRecords::complete(record, reserved);
        wake();
        return;
    }
    OneShotSignal done;
    record->done = &done;
    LogRecords::complete(record, reserved);
    await(done);
}

LogRecord* LogQueue::fill(std::uint32_t size, LogOutputs* outputs, const LogCall& call) {
    LogRecord* record = records_.reserve(size);
    record->outputs = outputs;
    record->level = call.level;
    record->flag = call.flag;
    record->context = call.context;
    record->file = call.file;
    record->function = call.function;
    record->line = call.line;
    record->tag = call.tag;
    return record;
}

void LogQueue::async(DispatchBlock block) {
    // A stepped clock waits for blocks, which its deadlines may stand behind, though not for lines.
    WorkerPool::shared().beginForeignRun();
    putBlock(std::move(block), nullptr);
    wake();
}

void LogQueue::sync(const std::function<void()>& block) {
    if (isCurrent()) return block();
    OneShotSignal done;
    putBlock(DispatchBlock([&block] { block(); }), &done);
    await(done);
}

void LogQueue::putBlock(DispatchBlock block, OneShotSignal* done) {
    auto body = std::make_unique<DispatchBlock>(std::move(block));
    LogRecord* record = records_.reserve(sizeof(LogRecord));
    record->kind = LogRecord::Kind::work;
    record->body = body.release();
    record->done = done;
    LogRecords::complete(record, sizeof(LogRecord));
}

void LogQueue::await(OneShotSignal& done) {
    if (role_.try_lock()) {
        drain(&done, SIZE_MAX);
        role_.unlock();
        // Lines that came behind ours are for the thread.
        if (records_.pending()) wake();
    } else {
        wake();
        if (sleep_.load() == notStarted) {  // no thread to be had
            const std::lock_guard role(role_);
            drain(&done, SIZE_MAX);
        }
    }
    done.wait();
}

// --- the thread -----------------------------------------------------------------------------------------

void LogQueue::wakeThread() {
    switch (sleep_.exchange(awake)) {
        case asleep:
            futexWakeOne(sleep_);
            break;
        case notStarted: {
            // Signals of the process are for its other threads, faults for whoever makes them.
            sigset_t mask;
            sigset_t former;
            sigfillset(&mask);
            for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS})
                sigdelset(&mask, fault);
            ::pthread_sigmask(SIG_SETMASK, &mask, &former);
            // Without a thread the lines go out with the next synchronous call, or at exit.
            if (!startWorkerThread(label_.c_str(), [this] { runThread(); })) sleep_.store(notStarted);
            ::pthread_sigmask(SIG_SETMASK, &former, nullptr);
            break;
        }
        default:
            break;
    }
}

void LogQueue::runThread() {
    bool lingered = false;
    for (;;) {
        if (records_.pending()) {
            const std::lock_guard role(role_);
            drain(nullptr, kBatch);
            lingered = false;
        } else if (!lingered) {
            ::nanosleep(&kLinger, nullptr);
            lingered = true;
        } else {
            sleep_.store(asleep);
            if (records_.pending()) {
                sleep_.store(awake);
            } else {
                futexWait(sleep_, asleep);
                lingered = false;
            }
        }
    }
}

// --- with the role of the drainer -----------------------------------------------------------------------

void LogQueue::drain(const OneShotSignal* until, std::size_t limit) {
    const CurrentQueueScope scope(this);
    drainer_.store(threadNumber());
    std::size_t count = 0;
    while (!until || !until->isSignalled()) {
        haltIfFrozen();
        LogRecord* record = records_.next();
        if (!record) break;
        handle(*record);
        if (++count == limit) break;
    }
    flushOutputs(Retire::all);
    drainer_.store(0);
}

void LogQueue::handle(LogRecord& record) {
    if (record.kind == LogRecord::Kind::work) {
        flushOutputs(Retire::earlier);
        std::unique_ptr<DispatchBlock> work(static_cast<DispatchBlock*>(record.body));
        record.body = nullptr;
        if (record.done) {
            (*work)();
        } else {
            runCounted(std::move(work));
        }
    } else {
        if (written_ != record.outputs) flushOutputs(Retire::earlier);
        std::string_view text(record.text(), record.textSize);
        if (record.kind == LogRecord::Kind::longLine) {
            longTexts_.emplace_back(static_cast<std::string*>(record.body));
            text = *longTexts_.back();
        }
        written_ = record.outputs;
        deliver(*record.outputs,
                {record.level, record.flag, record.context, record.file, record.function, record.line,
                 record.tag},
                text, Date{std::chrono::nanoseconds(record.timestamp)});
    }
    if (OneShotSignal* done = record.done) {
        flushOutputs(Retire::all);
        done->signal();
    }
}

void LogQueue::deliver(LogOutputs& outputs, const LogCall& call, std::string_view text, Date time) noexcept {
    if (call.flag == 0) return;
    const std::string_view file = call.file;
    const DDLogMessage message{.message = text,
                               .level = call.level,
                               .flag = call.flag,
                               .context = call.context,
                               .file = file,
                               .fileName = logFileName(file),
                               .function = call.function,
                               .line = call.line,
                               .tag = call.tag,
                               .timestamp = time};
    for (const auto& logger : outputs.loggers) {
        // A formatter of someone else's that throws costs its own line only.
        try {
            logger->logMessage(message);
        } catch (...) {
        }
    }
}

void LogQueue::deliverInside(LogOutputs& outputs, const LogCall& call, std::string_view text,
                             Date time) noexcept {
    deliver(outputs, call, text, time);
    // The outputs of the line in hand are flushed behind it; nobody else's would be.
    if (written_ == &outputs) return;
    LogOutputs* const inHand = std::exchange(written_, &outputs);
    flush(outputs);
    written_ = inHand;
}

void LogQueue::flush(const LogOutputs& outputs) noexcept {
    for (const auto& logger : outputs.loggers) {
        try {
            logger->flush();
        } catch (...) {
        }
    }
}

void LogQueue::flushOutputs(Retire retire) noexcept {
    if (written_) flush(*written_);
    written_ = nullptr;
    haltIfFrozen();
    retire == Retire::all ? records_.retire() : records_.retireEarlier();
    longTexts_.clear();
}

// --- crash and fork -------------------------------------------------------------------------------------

void LogQueue::haltIfFrozen() noexcept {
    if (frozen_.load() == 0) [[likely]]
        return;
    halted_.store(true);
    while (frozen_.load() != 0 && monotonicNanoseconds() < frozenUntil_.load()) {
        const timespec moment{0, 1'000'000};
        ::nanosleep(&moment, nullptr);
    }
    halted_.store(false);
}

std::size_t LogQueue::walkPending(DDLogPendingLines::Callback callback, void* context) noexcept {
    LogQueue* const known = used.load();
    if (!known) return 0;
    LogQueue& queue = *known;
    const int keptErrno = errno;
    const std::int64_t start = monotonicNanoseconds();
    // A thread that takes the role from now on sees the halt before it touches a record.
    queue.frozenUntil_.store(start + kLongestWalk);
    queue.frozen_.fetch_add(1);
    // By the clock, not by rounds, which get long on a loaded machine: a crash handler has a limit of its
    // own.
    while (monotonicNanoseconds() < start + kPatience) {
        const int drainer = queue.drainer_.load();
        if (drainer == 0 || drainer == threadNumber() || queue.halted_.load()) break;
        const timespec moment{0, 1'000'000};
        ::nanosleep(&moment, nullptr);
    }
    const std::size_t count = queue.visitLines(callback, context);
    queue.frozen_.fetch_sub(1);
    errno = keptErrno;
    return count;
}

std::size_t LogQueue::visitLines(DDLogPendingLines::Callback callback, void* context) noexcept {
    std::size_t count = 0;
    records_.visit([&](const LogRecord& record) {
        if (record.kind == LogRecord::Kind::work) return;
        ++count;
        if (!callback) return;
        std::string_view text(record.text(), record.textSize);
        if (record.kind == LogRecord::Kind::longLine) text = *static_cast<const std::string*>(record.body);
        callback({text, record.file, record.function, record.line, record.flag, record.timestamp}, context);
    });
    return count;
}

void LogQueue::beforeFork() {
    if (!isCurrent()) {
        role_.lock();
        // What was logged and set up so far is done here, so that the child neither repeats nor misses it.
        OneShotSignal done;
        putBlock(DispatchBlock([] {}), &done);
        drain(&done, SIZE_MAX);
    }
    records_.holdMemory();
}

void LogQueue::afterForkInParent() {
    records_.letGoOfMemory();
    if (!isCurrent()) role_.unlock();
}

void LogQueue::afterForkInChild() {
    records_.letGoOfMemory();
    // What other threads logged meanwhile is the parent's to write.
    records_.abandon();
    sleep_.store(notStarted);
    if (!isCurrent()) role_.unlock();
}

}  // namespace zqcore::platform
