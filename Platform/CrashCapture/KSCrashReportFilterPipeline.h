#pragma once

#include <memory>
#include <vector>

#include "Platform/Base/Export.h"
#include "Platform/CrashCapture/KSCrashReportFilter.h"

namespace zqcore::platform {

/// Filters in a row, each working on the list of the one before.
/// Threads: made and filled on one thread; nothing hops to another.
/// Failure: a filter that completes with false or without a list ends the row, and its answer is the answer.
class ZQ_EXPORT KSCrashReportFilterPipeline final : public KSCrashReportFilter {
  public:
    using Filters = std::vector<std::shared_ptr<KSCrashReportFilter>>;

    explicit KSCrashReportFilterPipeline(Filters filters) : filters_(std::move(filters)) {}
    [[nodiscard]] static std::shared_ptr<KSCrashReportFilterPipeline> make(Filters filters = {}) {
        return std::make_shared<KSCrashReportFilterPipeline>(std::move(filters));
    }

    /// Puts `filter` at the FRONT: the filter added last sees the reports first.
    void addFilter(std::shared_ptr<KSCrashReportFilter> filter);
    void filterReports(const KSCrashReports& reports,
                       const KSCrashReportFilterCompletion& onCompletion) override;

  private:
    Filters filters_;
};

}  // namespace zqcore::platform
