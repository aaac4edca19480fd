#pragma once

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Base/NSError.h"
#include "Platform/Base/Value.h"

namespace zqcore::platform {

/// The reports on disk: PATH/Reports/NAME-report-NUMBER.json, the number in 16 lower hexadecimal digits and
/// rising, each with the log lines of its last moment beside it in a file that ends in ".log".
/// Threads: one at a time; several processes may share a directory.
/// Failure: a report that is torn gives what there is of it; one that is being written isn't seen.
class KSCrashReportStore final {
  public:
    static constexpr std::size_t kMaximumCount = 5;

    KSCrashReportStore(const std::string& path, std::string name);

    /// Makes the directory and deletes all but the newest five reports.
    std::expected<void, NSError> prepare();

    /// What the next report's path begins with, up to the number.
    [[nodiscard]] std::string reportPrefix() const;
    /// A number above all that are taken.
    [[nodiscard]] std::uint64_t nextNumber() const;

    /// The numbers of the reports that are ready to be read, the oldest first.
    [[nodiscard]] std::vector<std::uint64_t> readyReports() const;
    /// The report with its symbols and its log lines; absent if its file can't be read, or is gone.
    [[nodiscard]] std::optional<Value::Dictionary> read(std::uint64_t number) const;
    /// Deletes the report and what lies beside it.
    void remove(std::uint64_t number) const;

  private:
    [[nodiscard]] std::vector<std::uint64_t> numbers() const;
    [[nodiscard]] std::string filePath(std::uint64_t number, const char* extension) const;

    std::string directory_;
    std::string name_;
};

}  // namespace zqcore::platform
