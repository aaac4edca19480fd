#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Platform/Base/Export.h"
#include "Platform/Base/Value.h"

namespace zqcore::platform {

/// One crash report on its way through the filters; what it wraps, its class tells.
/// Threads: immutable. Lifetime: held by `std::shared_ptr`.
class ZQ_EXPORT KSCrashReport {
  public:
    KSCrashReport() = default;
    KSCrashReport(const KSCrashReport&) = delete;
    KSCrashReport& operator=(const KSCrashReport&) = delete;
    virtual ~KSCrashReport();
};

/// A report as the store gives it: nested dictionaries.
class ZQ_EXPORT KSCrashReportDictionary final : public KSCrashReport {
  public:
    explicit KSCrashReportDictionary(Value::Dictionary value) : value_(std::move(value)) {}
    [[nodiscard]] static std::shared_ptr<KSCrashReportDictionary> make(Value::Dictionary value) {
        return std::make_shared<KSCrashReportDictionary>(std::move(value));
    }
    [[nodiscard]] const Value::Dictionary& value() const noexcept { return value_; }

  private:
    Value::Dictionary value_;
};

/// A report as text.
class ZQ_EXPORT KSCrashReportString final : public KSCrashReport {
  public:
    explicit KSCrashReportString(std::string value) : value_(std::move(value)) {}
    [[nodiscard]] static std::shared_ptr<KSCrashReportString> make(std::string value) {
        return std::make_shared<KSCrashReportString>(std::move(value));
    }
    [[nodiscard]] const std::string& value() const noexcept { return value_; }

  private:
    std::string value_;
};

using KSCrashReports = std::vector<std::shared_ptr<KSCrashReport>>;

}  // namespace zqcore::platform
