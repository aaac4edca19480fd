#pragma once

#include <map>

#include "Platform/Base/Date.h"
#include "Platform/Base/Export.h"
#include "Platform/CrashCapture/KSCrashReportFilter.h"

namespace zqcore {

/// The filter that keeps when each crash was, before its report becomes text.
/// Threads: that of the sending, which is one. Failure: an error line, and no date for that report.
class ZQ_EXPORT ZQCrashDateSink final : public KSCrashReportFilter {
  public:
    /// The dates by the place of the report in the list, from 0. They stay to the end of the process.
    [[nodiscard]] static std::map<long, Date>& dates() noexcept;

    /// Completes with the same reports, true and no error.
    void filterReports(const KSCrashReports& reports,
                       const KSCrashReportFilterCompletion& onCompletion) override;
};

}  // namespace zqcore
