#pragma once

#include "Platform/Base/Export.h"
#include "Platform/Lumberjack/DDLogDateFormatter.h"
#include "Platform/Lumberjack/DDLogger.h"

namespace zqcore {

/// Lines for the log files: "[DATE ● FILE ● LINE ● MARK] FUNCTION ● MESSAGE". The date is in the local zone,
/// "yyyy-MM-dd HH:mm:ss.SSS". Threads: see `DDLogFormatter`; one formatter belongs to one output.
class ZQ_EXPORT ZQFileLogFormatter final : public DDLogFormatter {
  public:
    /// Never absent.
    [[nodiscard]] std::optional<std::string> formatLogMessage(const DDLogMessage& message) override;

  private:
    DDLogDateFormatter dateFormatter_;
};

}  // namespace zqcore
