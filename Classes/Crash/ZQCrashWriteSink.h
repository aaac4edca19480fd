#pragma once

#include "Platform/Base/Export.h"
#include "Platform/CrashCapture/KSCrashReportFilter.h"

namespace zqcore {

/// The filter that writes each report's text into a file of its own, named by the date that `ZQCrashDateSink`
/// has kept for it. A file of the same name is replaced.
/// Threads: that of the sending, which is one. Failure: an error line, and false in the completion; the other
/// reports are written all the same.
class ZQ_EXPORT ZQCrashWriteSink final : public KSCrashReportFilter {
  public:
    /// Completes with the same reports, whether all were written, and no error.
    void filterReports(const KSCrashReports& reports,
                       const KSCrashReportFilterCompletion& onCompletion) override;
};

}  // namespace zqcore
