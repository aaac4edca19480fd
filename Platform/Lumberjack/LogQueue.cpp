#include "Platform/Lumberjack/LogQueue.h"

#include <pthread.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <utility>

#include "Platform/Base/Clock.h"
#include "Platform/Lumberjack/DDLogger.h"

namespace zqcore::platform {

namespace {

// Lines between two looks at who else wants the role; their outputs are flushed together.
constexpr std::size_t kBatch = 512;
// The idle thread looks once more after this time before it sleeps, so that a stream of lines doesn't pay
// for a wake-up each.
constexpr timespec kLinger{0, 200'000};

thread_local bool onQueue = false;

int threadNumber() noexcept { return static_cast<int>(::syscall(SYS_gettid)); }

constexpr std::uint32_t aligned(std::size_t size) { return static_cast<std::uint32_t>((size + 7) & ~7UL); }

// For those who must not make the queue: null until it is first used.
std::atomic<LogQueue*> used{nullptr};

// Runs last of all at exit, so that lines of static destructors are written too.
[[gnu::destructor]] void flushAtExit() {
    if (LogQueue* queue = used.load()) queue->sync([] {});
}

}  // namespace

std::string_view logFileName(std::string_view path) noexcept {
    if (const auto slash = path.rfind('/'); slash != std::string_view::npos) path.remove_prefix(slash + 1);
    return path.substr(0, path.rfind('.'));
}

LogQueue& LogQueue::shared() {
    static LogQueue& queue = [] -> LogQueue& {
        auto& made = *new LogQueue;
        used.store(&made);
        return made;
    }();
    return queue;
}

bool LogQueue::isCurrent() noexcept { return onQueue; }

LogQueue::LogQueue() {
    // The outputs must be at rest in the child, and its copy of the thread doesn't exist.
    ::pthread_atfork([] { shared().beforeFork(); }, [] { shared().afterForkInParent(); },
                     [] { shared().afterForkInChild(); });
}

void LogQueue::log(bool asynchronous, LogOutputs* outputs, const LogCall& call, std::string_view text,
                   std::string* owned) {
    const Date time = Clock::current().wallNow();
    if (!asynchronous && onQueue) return deliver(*outputs, call, text, time);
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
    std::atomic<std::uint32_t> done{0};
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

void LogQueue::async(Work work) {
    auto body = std::make_unique<Work>(std::move(work));
    LogRecord* record = records_.reserve(sizeof(LogRecord));
    record->kind = LogRecord::Kind::work;
    record->body = body.release();
    LogRecords::complete(record, sizeof(LogRecord));
    wake();
}

void LogQueue::sync(Work work) {
    if (onQueue) return work();
    std::atomic<std::uint32_t> done{0};
    auto body = std::make_unique<Work>(std::move(work));
    LogRecord* record = records_.reserve(sizeof(LogRecord));
    record->kind = LogRecord::Kind::work;
    record->body = body.release();
    record->done = &done;
    LogRecords::complete(record, sizeof(LogRecord));
    await(done);
}

void LogQueue::await(std::atomic<std::uint32_t>& done) {
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
    done.wait(0);
}

// --- the thread -----------------------------------------------------------------------------------------

void LogQueue::wakeThread() {
    switch (sleep_.exchange(awake)) {
        case asleep:
            sleep_.notify_one();
            break;
        case notStarted: {
            pthread_attr_t attributes;
            ::pthread_attr_init(&attributes);
            ::pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
            // Signals of the process are for its other threads.
            sigset_t all;
            sigset_t old;
            sigfillset(&all);
            for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS})
                sigdelset(&all, fault);
            ::pthread_sigmask(SIG_SETMASK, &all, &old);
            pthread_t thread;
            // Without a thread the lines go out with the next synchronous call, or at exit.
            if (::pthread_create(&thread, &attributes, &LogQueue::threadMain, this) != 0)
                sleep_.store(notStarted);
            ::pthread_sigmask(SIG_SETMASK, &old, nullptr);
            ::pthread_attr_destroy(&attributes);
            break;
        }
        default:
            break;
    }
}

void* LogQueue::threadMain(void* queue) {
    ::pthread_setname_np(::pthread_self(), "cocoa.lumberjac");  // fifteen characters are all there is
    static_cast<LogQueue*>(queue)->runThread();
    return nullptr;
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
                sleep_.wait(asleep);
                lingered = false;
            }
        }
    }
}

// --- with the role of the drainer -----------------------------------------------------------------------

void LogQueue::drain(const std::atomic<std::uint32_t>* until, std::size_t limit) noexcept {
    onQueue = true;
    drainer_.store(threadNumber());
    std::size_t count = 0;
    while (!until || until->load(std::memory_order_acquire) == 0) {
        haltIfFrozen();
        LogRecord* record = records_.next();
        if (!record) break;
        handle(*record);
        if (++count == limit) break;
    }
    flushOutputs();
    drainer_.store(0);
    onQueue = false;
}

void LogQueue::handle(LogRecord& record) {
    if (record.kind == LogRecord::Kind::work) {
        flushOutputs();
        const std::unique_ptr<Work> work(static_cast<Work*>(record.body));
        record.body = nullptr;
        (*work)();
    } else {
        if (written_ != record.outputs) flushOutputs();
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
    if (std::atomic<std::uint32_t>* done = record.done) {
        flushOutputs();
        done->store(1, std::memory_order_release);
        done->notify_one();
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

void LogQueue::flushOutputs() noexcept {
    if (LogOutputs* outputs = std::exchange(written_, nullptr)) {
        for (const auto& logger : outputs->loggers) {
            try {
                logger->flush();
            } catch (...) {
            }
        }
    }
    haltIfFrozen();
    records_.retire();
    longTexts_.clear();
}

// --- crash and fork -------------------------------------------------------------------------------------

void LogQueue::haltIfFrozen() noexcept {
    if (frozen_.load() == 0) [[likely]]
        return;
    halted_.store(true);
    while (frozen_.load() != 0) {
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
    // A thread that takes the role from now on sees the halt before it touches a record.
    queue.frozen_.fetch_add(1);
    for (int round = 0; round < 100; ++round) {
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
    if (!onQueue) role_.lock();
}

void LogQueue::afterForkInParent() {
    if (!onQueue) role_.unlock();
}

void LogQueue::afterForkInChild() {
    // What was waiting is the parent's to write.
    records_.abandon();
    sleep_.store(notStarted);
    afterForkInParent();
}

}  // namespace zqcore::platform
