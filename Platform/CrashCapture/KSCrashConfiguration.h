#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>

#include "Platform/Base/Export.h"

namespace zqcore::platform {

/// What happens to the stored reports after they were sent. The numbers are the platform's.
enum class KSCrashDeleteBehavior : std::uint8_t { never = 0, onSuccess = 1, always = 2 };

/// How crash capture is to work. Threads: a value.
class ZQ_EXPORT KSCrashConfiguration final {
  public:
    /// Saves, inside the signal handler, what the log still holds: async-signal-safe, writes text to `fd`.
    using PendingLogWriter = void (*)(int fd);

    KSCrashConfiguration() = default;

    [[nodiscard]] KSCrashDeleteBehavior deleteBehaviorAfterSendAll() const noexcept {
        return deleteBehavior_;
    }
    void setDeleteBehaviorAfterSendAll(KSCrashDeleteBehavior value) noexcept { deleteBehavior_ = value; }

    /// Where the reports lie; the empty text stands for CACHES/KSCrash/BUNDLENAME.
    [[nodiscard]] const std::string& installPath() const noexcept { return installPath_; }
    void setInstallPath(std::string path) { installPath_ = std::move(path); }

    /// The lines go to a file beside the report, and from there into it. Initially none.
    [[nodiscard]] PendingLogWriter pendingLogWriter() const noexcept { return pendingLogWriter_; }
    void setPendingLogWriter(PendingLogWriter writer) noexcept { pendingLogWriter_ = writer; }

    /// How long one section of a report may take before the handler gives it up. Initially 3 s.
    [[nodiscard]] std::chrono::milliseconds sectionTimeLimit() const noexcept { return sectionTimeLimit_; }
    void setSectionTimeLimit(std::chrono::milliseconds limit) noexcept { sectionTimeLimit_ = limit; }

  private:
    std::string installPath_;
    PendingLogWriter pendingLogWriter_ = nullptr;
    std::chrono::milliseconds sectionTimeLimit_{3000};
    KSCrashDeleteBehavior deleteBehavior_ = KSCrashDeleteBehavior::always;
};

}  // namespace zqcore::platform
