#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/Base/NSLog.h"

namespace zqcore::testkit {

/// Keeps what the platform layer reports (`NSLog`) while it lives; what was reported before is not in it, and
/// standard error has the lines again afterwards. Threads: any may report. Lifetime: one at a time.
class PlatformReports final {
  public:
    PlatformReports() {
        platform::setNSLogHandler([](std::string_view line) {
            const std::lock_guard lock(kept().mutex);
            kept().lines.emplace_back(line);
        });
        // The first handler of a process is given the earlier lines too.
        (void)take();
    }
    ~PlatformReports() { platform::setNSLogHandler(nullptr); }
    PlatformReports(const PlatformReports&) = delete;
    PlatformReports& operator=(const PlatformReports&) = delete;

    /// The lines since the beginning or the last call, each once.
    [[nodiscard]] std::vector<std::string> take() {
        const std::lock_guard lock(kept().mutex);
        return std::exchange(kept().lines, {});
    }

  private:
    struct Kept {
        std::mutex mutex;
        std::vector<std::string> lines;
    };
    static Kept& kept() {
        static Kept& shared = *new Kept;
        return shared;
    }
};

}  // namespace zqcore::testkit
