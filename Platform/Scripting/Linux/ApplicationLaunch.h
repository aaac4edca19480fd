#pragma once

#include <sys/types.h>

#include <chrono>
#include <condition_variable>
#include <expected>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "Platform/Base/NSError.h"
#include "Platform/Scripting/Linux/DesktopEntries.h"

namespace zqcore::platform {

/// A program that was started for its desktop entry and is to come to the bus. Time: it has until `limit`
/// from its start, by the system's monotonic time, as calls on the bus have. Threads: any; one thread sleeps
/// for as long as the program runs, to reap it. Lifetime: shared by those who wait. Failure: a program that
/// can't be started, or ends with a status other than 0 before it came; one that ends with 0 may have left a
/// child that comes.
class ApplicationLaunch final {
    struct Private {};

  public:
    explicit ApplicationLaunch(Private) {}

    [[nodiscard]] static std::shared_ptr<ApplicationLaunch> start(const DesktopEntry& entry,
                                                                  std::chrono::microseconds limit);

    /// Neither there nor given up.
    [[nodiscard]] bool pending();
    [[nodiscard]] bool failed();
    /// The application serves its name. Only the first end of a launch counts.
    void cameUp() { end({}); }
    void fail(NSError error) { end(std::unexpected(std::move(error))); }
    /// Blocks until it came or failed.
    [[nodiscard]] std::expected<void, NSError> wait();

  private:
    void end(std::expected<void, NSError> result);
    void reap(pid_t child);

    std::mutex mutex_;
    std::condition_variable ended_;
    std::chrono::steady_clock::time_point deadline_;
    std::optional<std::expected<void, NSError>> result_;
};

}  // namespace zqcore::platform
