#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Dispatch/Linux/Futex.h"
#include "Platform/Lumberjack/DDLogMessage.h"
#include "Platform/Lumberjack/DDLogPendingLines.h"
#include "Platform/Lumberjack/Linux/LogRecords.h"

namespace zqcore::platform {

class DDLogger;

/// What the caller of a log call tells beside the text.
struct LogCall {
    std::uint64_t level;
    std::uint64_t flag;
    std::int64_t context;
    const char* file;
    const char* function;
    std::uint32_t line;
    const void* tag;
};

/// The outputs of one DDLog. Touched on the log queue only.
struct LogOutputs {
    std::vector<std::shared_ptr<DDLogger>> loggers;
};

/// The serial queue "cocoa.lumberjack" of all loggers. Whoever holds the role of the drainer takes records
/// out: the queue's own thread, or a caller that waits for its record and finds the role free, which spares
/// it two changes of thread. The thread starts with the first asynchronous record. Lives for ever.
class LogQueue final : public DispatchQueue {
  public:
    [[nodiscard]] static LogQueue& shared();
    /// Whether the calling code runs on the queue.
    [[nodiscard]] static bool isCurrent() noexcept;

    /// Puts one line in. A text that is too long for a record is moved from `owned` if that is given.
    void log(bool asynchronous, LogOutputs* outputs, const LogCall& call, std::string_view text,
             std::string* owned);
    void async(DispatchBlock block) override;
    /// On the queue itself at once, unlike other queues, since an output may log.
    void sync(const std::function<void()>& block) override;
    [[nodiscard]] const std::string& label() const noexcept override { return label_; }
    [[nodiscard]] DispatchQoS qos() const noexcept override { return DispatchQoS::utility; }

    /// See `DDLogPendingLines`. Nothing if no line was ever logged.
    static std::size_t walkPending(DDLogPendingLines::Callback callback, void* context) noexcept;

  private:
    LogQueue();
    ~LogQueue() override = default;

    enum Sleep : std::uint32_t { awake, asleep, notStarted };

    LogRecord* fill(std::uint32_t size, LogOutputs* outputs, const LogCall& call);
    void putBlock(DispatchBlock block, OneShotSignal* done);
    void await(OneShotSignal& done);
    void wake() {
        if (sleep_.load() != awake) [[unlikely]]
            wakeThread();
    }
    void wakeThread();
    void runThread();

    // With the role of the drainer.
    void drain(const OneShotSignal* until, std::size_t limit);
    void handle(LogRecord& record);
    void deliver(LogOutputs& outputs, const LogCall& call, std::string_view text, Date time) noexcept;
    /// A line that was logged on the queue itself, by an output or a formatter.
    void deliverInside(LogOutputs& outputs, const LogCall& call, std::string_view text, Date time) noexcept;
    static void flush(const LogOutputs& outputs) noexcept;
    enum class Retire { all, earlier };
    void flushOutputs(Retire retire) noexcept;
    void haltIfFrozen() noexcept;
    std::size_t visitLines(DDLogPendingLines::Callback callback, void* context) noexcept;

    void beforeFork();
    void afterForkInParent();
    void afterForkInChild();

    LogRecords records_;
    const std::string label_ = "cocoa.lumberjack";
    FutexWord sleep_{notStarted};
    std::mutex role_;
    std::atomic<int> drainer_{0};  // thread number of the role's holder
    std::atomic<int> frozen_{0};
    std::atomic<std::int64_t> frozenUntil_{0};  // by the machine's monotonic clock
    std::atomic<bool> halted_{false};
    LogOutputs* written_ = nullptr;  // whose outputs may keep lines back
    std::vector<std::unique_ptr<std::string>> longTexts_;
};

}  // namespace zqcore::platform
