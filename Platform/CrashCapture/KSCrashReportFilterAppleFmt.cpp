#include "Platform/CrashCapture/KSCrashReportFilterAppleFmt.h"

#include "Platform/CrashCapture/AppleText.h"

namespace zqcore::platform {

std::string KSCrashReportFilterAppleFmt::appleText(const Value::Dictionary& dictionary,
                                                   KSAppleReportStyle style) {
    const crash::ReportFields report(&dictionary);
    return crash::headerText(report) + crash::errorText(report) + crash::applicationText(report) +
           crash::threadsText(report, style) + crash::threadStateText(report) + crash::imagesText(report) +
           crash::extraText(report, style);
}

void KSCrashReportFilterAppleFmt::filterReports(const KSCrashReports& reports,
                                                const KSCrashReportFilterCompletion& onCompletion) {
    KSCrashReports texts;
    texts.reserve(reports.size());
    for (const auto& report : reports) {
        const auto dictionary = std::dynamic_pointer_cast<KSCrashReportDictionary>(report);
        texts.push_back(dictionary ? KSCrashReportString::make(appleText(dictionary->value(), style_))
                                   : report);
    }
    if (onCompletion) onCompletion(texts, true, std::nullopt);
}

}  // namespace zqcore::platform
