#pragma once

#include <expected>
#include <memory>

#include "Platform/Base/Export.h"
#include "Platform/Base/NSError.h"
#include "Platform/CrashCapture/KSCrashConfiguration.h"
#include "Platform/CrashCapture/KSCrashReportFilter.h"

namespace zqcore::platform {

class KSCrashReportStore;

/// Capture of crashes and hand-over of the reports that earlier runs left.
///
/// A signal that ends the process (SIGSEGV, SIGABRT, SIGBUS, SIGILL, SIGFPE, SIGTRAP, SIGSYS) on any thread,
/// or an exception that nobody catches, leaves a report in the store. Then the handler that was there before
/// goes on, so a debugger, a core file or another library sees what it always saw. What the report couldn't
/// tell safely in the signal handler (symbols, names of types) is added when it is read. Threads: everything
/// here on one thread, once at start; crashes come on any. Stack overflows are caught on the main thread, on
/// the installing one and on those of the queues. Lifetime: for ever; there is no way back. Failure: an
/// `NSError` of the domain "KSCrash" or of the file system.
class ZQ_EXPORT KSCrash final {
  public:
    [[nodiscard]] static KSCrash& sharedInstance();

    /// Makes the store's directory, deletes all but the newest five reports, and arms the handlers. A second
    /// call changes the configuration and nothing else. Fails if the directory can't be made.
    std::expected<void, NSError> installWithConfiguration(const KSCrashConfiguration& configuration);

    /// Where `sendAllReportsWithCompletion` hands the reports to; a null pointer for nowhere.
    void setSink(std::shared_ptr<KSCrashReportFilter> sink);

    /// Gives the stored reports, oldest first, to the sink, and deletes them as configured when it has
    /// completed. Without reports the completion comes at once with an empty list, true and no error; without
    /// a sink, with the reports, false and an error. A report that is still being written is left for later.
    void sendAllReportsWithCompletion(const KSCrashReportFilterCompletion& onCompletion);

  private:
    KSCrash();
    ~KSCrash() = delete;
    KSCrashReportStore& store();

    KSCrashConfiguration configuration_;
    std::unique_ptr<KSCrashReportStore> store_;
    std::shared_ptr<KSCrashReportFilter> sink_;
};

}  // namespace zqcore::platform
