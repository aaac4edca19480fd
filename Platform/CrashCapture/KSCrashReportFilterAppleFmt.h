#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Platform/Base/Export.h"
#include "Platform/CrashCapture/KSCrashReportFilter.h"

namespace zqcore::platform {

/// How frames are written. The numbers are the platform's.
enum class KSAppleReportStyle : std::uint8_t {
    unsymbolicated = 0,          ///< "0xBASE + OFFSET"
    partiallySymbolicated = 1,   ///< as 3, but the program's own frames as 0
    symbolicatedSideBySide = 2,  ///< "0xBASE + OFFSET (SYMBOL + OFFSET)"
    symbolicated = 3,            ///< "SYMBOL + OFFSET"
};

/// Turns reports from dictionaries into the text of a crash report as people and tools of the platform read
/// it. Order and count stay: what is text already passes unchanged, and of a dictionary that lacks things is
/// written what can be, "(null)" standing for a missing value.
/// Threads: any. Failure: none.
class ZQ_EXPORT KSCrashReportFilterAppleFmt final : public KSCrashReportFilter {
  public:
    explicit KSCrashReportFilterAppleFmt(KSAppleReportStyle style) noexcept : style_(style) {}
    [[nodiscard]] static std::shared_ptr<KSCrashReportFilterAppleFmt> make(KSAppleReportStyle style) {
        return std::make_shared<KSCrashReportFilterAppleFmt>(style);
    }

    void filterReports(const KSCrashReports& reports,
                       const KSCrashReportFilterCompletion& onCompletion) override;

    /// The text of one report.
    [[nodiscard]] static std::string appleText(const Value::Dictionary& report, KSAppleReportStyle style);

  private:
    KSAppleReportStyle style_;
};

}  // namespace zqcore::platform
