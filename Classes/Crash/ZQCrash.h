#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Base/Date.h"
#include "Platform/Base/Export.h"

namespace zqcore {

/// Crash capture, and the export of what earlier runs left.
///
/// Call `install()` first thing in `main`:
///
///     int main() {
///         zqcore::ZQCrash::install();
///         if (!zqcore::ZQCrash::exportedReports().empty()) offerToSend();
///
/// Threads: `install` once, at start; the rest on any. Failure: log lines only; the process goes on in any
/// case. The capture is armed before the log is set up, so that a fault of that is captured too: what the
/// platform itself has to tell meanwhile, such as a damaged Info.plist, goes to standard error only.
class ZQ_EXPORT ZQCrash final {
  public:
    ZQCrash() = delete;

    /// Arms the capture of crashes and writes each report of earlier runs as a text file into the directory
    /// "ZQCrash" beside the logs; the files are there when it returns. A second call does nothing.
    static void install();

    struct ExportedReport {
        std::string path;
        /// The moment of the crash; absent for a report that didn't tell it.
        std::optional<Date> date;
    };
    /// The files that lie there now, the oldest first, those without a date last. For an application that
    /// wants to ask its user about them. It may delete them; nothing else ever does.
    [[nodiscard]] static std::vector<ExportedReport> exportedReports(
        const std::string& directory = exportDirectory());

    /// The directory that the files lie in.
    [[nodiscard]] static std::string exportDirectory();
    /// That of another application of this user, one that isn't sandboxed. Makes nothing on disk.
    [[nodiscard]] static std::string exportDirectory(std::string_view identifier);
};

}  // namespace zqcore
