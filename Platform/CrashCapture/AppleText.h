#pragma once

#include <string>

#include "Platform/CrashCapture/KSCrashReportFilterAppleFmt.h"
#include "Platform/CrashCapture/ReportFields.h"

// The pieces of the text, one function each, in the order in which they stand in it.
namespace zqcore::platform::crash {

/// "X86_64", "ARM-64" and so on, for the architecture in "system".
[[nodiscard]] std::string codeType(const ReportFields& system);

[[nodiscard]] std::string headerText(const ReportFields& report);
[[nodiscard]] std::string errorText(const ReportFields& report);
/// The uncaught exception, or what the application reported itself; empty for a signal.
[[nodiscard]] std::string applicationText(const ReportFields& report);
[[nodiscard]] std::string threadsText(const ReportFields& report, KSAppleReportStyle style);
/// The registers of the crashed thread.
[[nodiscard]] std::string threadStateText(const ReportFields& report);
[[nodiscard]] std::string imagesText(const ReportFields& report);
[[nodiscard]] std::string extraText(const ReportFields& report, KSAppleReportStyle style);

}  // namespace zqcore::platform::crash
