#pragma once

#include "Platform/Base/Export.h"
#include "Platform/Lumberjack/DDLogger.h"

namespace zqcore {

/// Lines for the system's log, which keeps the date itself: "[MARK] MESSAGE". Threads: see `DDLogFormatter`.
class ZQ_EXPORT ZQConsoleLogFormatter final : public DDLogFormatter {
  public:
    /// Never absent.
    [[nodiscard]] std::optional<std::string> formatLogMessage(const DDLogMessage& message) override;
};

}  // namespace zqcore
