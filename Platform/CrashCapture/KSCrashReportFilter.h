#pragma once

#include <functional>
#include <optional>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSError.h"
#include "Platform/CrashCapture/KSCrashReport.h"

namespace zqcore::platform {

/// What a filter answers: its list, which may be absent; whether it did its work; and why not.
using KSCrashReportFilterCompletion =
    std::function<void(const std::optional<KSCrashReports>& filteredReports, bool completed,
                       const std::optional<NSError>& error)>;

/// One step in the handling of stored reports: it gets a list and hands on a list of its own.
/// Threads: called on the thread that sends the reports; whoever passes a completion gets it exactly once.
class ZQ_EXPORT KSCrashReportFilter {
  public:
    virtual ~KSCrashReportFilter();
    /// `onCompletion` may be empty.
    virtual void filterReports(const KSCrashReports& reports,
                               const KSCrashReportFilterCompletion& onCompletion) = 0;
};

}  // namespace zqcore::platform
