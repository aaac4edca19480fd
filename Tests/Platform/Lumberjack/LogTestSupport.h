#pragma once

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include "Platform/Lumberjack/DDLog.h"
#include "TestKit/ScratchFolder.h"

namespace zqcore::testing_support {

inline std::vector<std::string> namesIn(const std::string& directory) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory))
        names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
}

using testkit::contentOf;

/// Logs one line of bare text.
inline void say(DDLog& ddlog, std::string_view text, bool asynchronous = false,
                std::uint64_t flag = DDLogFlagInfo) {
    ddlog.log(asynchronous, DDLogLevelAll, flag, 0, "/x/Place.cpp", "function()", 7, nullptr, text);
}

/// An output that keeps what it gets.
class MemoryLogger final : public DDLogger {
  public:
    void logMessage(const DDLogMessage& message) override {
        if (auto line = formatted(message)) {
            const std::lock_guard lock(mutex_);
            lines_.push_back(std::move(*line));
        }
    }
    [[nodiscard]] std::vector<std::string> lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

  private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

}  // namespace zqcore::testing_support
