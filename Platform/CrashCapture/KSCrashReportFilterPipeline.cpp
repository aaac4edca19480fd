#include "Platform/CrashCapture/KSCrashReportFilterPipeline.h"

#include <utility>

namespace zqcore::platform {

KSCrashReport::~KSCrashReport() = default;
KSCrashReportFilter::~KSCrashReportFilter() = default;

namespace {

// Each step is entered from the completion of the one before, so that a filter may answer later. The list of
// filters is shared by the steps: the pipeline itself may be gone by then.
void runFrom(const std::shared_ptr<const KSCrashReportFilterPipeline::Filters>& filters, std::size_t index,
             const KSCrashReports& reports, const KSCrashReportFilterCompletion& onCompletion) {
    if (index == filters->size()) {
        if (onCompletion) onCompletion(reports, true, std::nullopt);
        return;
    }
    (*filters)[index]->filterReports(
        reports, [filters, index, onCompletion](const std::optional<KSCrashReports>& filtered, bool completed,
                                                const std::optional<NSError>& error) {
            if (completed && filtered) {
                runFrom(filters, index + 1, *filtered, onCompletion);
            } else if (onCompletion) {
                onCompletion(filtered, false, error);
            }
        });
}

}  // namespace

void KSCrashReportFilterPipeline::addFilter(std::shared_ptr<KSCrashReportFilter> filter) {
    filters_.insert(filters_.begin(), std::move(filter));
}

void KSCrashReportFilterPipeline::filterReports(const KSCrashReports& reports,
                                                const KSCrashReportFilterCompletion& onCompletion) {
    runFrom(std::make_shared<const Filters>(filters_), 0, reports, onCompletion);
}

}  // namespace zqcore::platform
