#pragma once

#include <unistd.h>

#include <atomic>
#include <memory>
#include <string>

#include "Platform/Base/Export.h"
#include "Platform/Lumberjack/DDLogger.h"

namespace zqcore::platform {

/// The output to the system's log: one datagram a line to the journal, or one row on standard error while no
/// journal answers. Priorities: error and warning 3, info 6, debug and verbose 7, any other flag 5. Threads:
/// see `DDLogger`. Failure: none; each line tries the journal again.
class ZQ_EXPORT DDOSLogger final : public DDLogger {
  public:
    /// The process's one output to the system's journal.
    [[nodiscard]] static const std::shared_ptr<DDOSLogger>& sharedInstance();
    /// An output to the journal that listens at `socketPath`, with `fallback` in place of standard error. The
    /// descriptor stays the caller's.
    [[nodiscard]] static std::shared_ptr<DDOSLogger> make(const std::string& socketPath,
                                                          int fallback = STDERR_FILENO);
    ~DDOSLogger() override;

    /// Where lines go without a journal, from the next line on; -1 drops them. Any thread.
    void setFallback(int descriptor) noexcept { fallback_.store(descriptor, std::memory_order_relaxed); }

    void logMessage(const DDLogMessage& message) override;

  private:
    DDOSLogger(const std::string& socketPath, int fallback);

    class Journal;
    std::unique_ptr<Journal> journal_;
    std::atomic<int> fallback_;
};

}  // namespace zqcore::platform
